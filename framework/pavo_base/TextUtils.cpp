#include "pavo_base/TextUtils.h"

#include <algorithm>

std::string TextUtils::trim(const std::string& text)
{
    constexpr const char* kBlanks = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string TextUtils::tolower(const std::string& text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

QString TextUtils::utf8ToUnicode(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}
