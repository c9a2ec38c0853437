#include "bench/messages/Transport.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

constexpr std::string_view kLinkStart = "https://desk.example/";
constexpr std::size_t kDigits = 19;

} // namespace

std::string requestText(const std::string& link)
{
    return R"({"name":"Request","source":"host","sequence":1,"arguments":[{"api":"showLXAccusation","url":")" +
           link + "\"}]}";
}

std::string linkIn(const char* text, int length)
{
    const std::string_view all(text, static_cast<std::size_t>(length));
    const auto start = all.find(kLinkStart);
    return start == std::string_view::npos
               ? std::string()
               : std::string(all.substr(start, kLinkStart.size() + kDigits));
}

QByteArray framed(const std::string& text)
{
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.append(static_cast<char>(text.size() >> shift & 0xFFU));
    return bytes.append(text.data(), static_cast<int>(text.size()));
}

std::string linkOf(std::int64_t ns)
{
    const std::string digits = std::to_string(ns);
    return std::string(kLinkStart) + std::string(kDigits - digits.size(), '0') + digits;
}

std::int64_t momentIn(const std::string& link)
{
    return std::strtoll(link.c_str() + kLinkStart.size(), nullptr, 10);
}
