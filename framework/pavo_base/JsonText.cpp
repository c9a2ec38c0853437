#include "pavo_base/JsonText.h"

#include <json/writer.h>

#include <charconv>
#include <string_view>

namespace {

/// The letter that stands behind the backslash for `c`, or NUL where there is none.
char shortEscape(char c)
{
    switch (c) {
    case '"':
    case '\\':
        return c;
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return '\0';
    }
}

void appendText(std::string_view text, std::string& out)
{
    constexpr const char* kHexDigits = "0123456789abcdef";
    out += '"';
    std::size_t done = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c >= ' ' && c != '"' && c != '\\')
            continue;
        out.append(text, done, i - done);
        done = i + 1;
        out += '\\';
        if (const char escape = shortEscape(text[i])) {
            out += escape;
        } else {
            out += "u00";
            out += kHexDigits[c >> 4];
            out += kHexDigits[c & 0xF];
        }
    }
    out.append(text, done, std::string_view::npos);
    out += '"';
}

template<typename Integer>
void appendInteger(Integer number, std::string& out)
{
    char digits[24];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

bool appendMembers(const Json::Value& object, int levels, std::string& out)
{
    char separator = '{';
    const auto end = object.end();
    for (auto member = object.begin(); member != end; ++member) {
        out += separator;
        const char* keyEnd = nullptr;
        const char* const key = member.memberName(&keyEnd);
        appendText({key, static_cast<std::size_t>(keyEnd - key)}, out);
        out += ':';
        if (!appendJson(*member, levels, out))
            return false;
        separator = ',';
    }
    out += object.empty() ? "{}" : "}";
    return true;
}

bool appendElements(const Json::Value& array, int levels, std::string& out)
{
    char separator = '[';
    auto element = array.begin();
    const Json::ArrayIndex size = array.size();
    for (Json::ArrayIndex index = 0; index < size; ++index) {
        out += separator;
        // jsoncpp keeps nothing for an element that was never set.
        const bool isSet = element.index() == index;
        if (!appendJson(isSet ? *element++ : Json::Value::nullSingleton(), levels, out))
            return false;
        separator = ',';
    }
    out += array.empty() ? "[]" : "]";
    return true;
}

} // namespace

bool appendJson(const Json::Value& value, int levels, std::string& out)
{
    if (levels == 0)
        return false;
    switch (value.type()) {
    case Json::nullValue:
        out += "null";
        break;
    case Json::booleanValue:
        out += value.asBool() ? "true" : "false";
        break;
    case Json::intValue:
        appendInteger(value.asInt64(), out);
        break;
    case Json::uintValue:
        appendInteger(value.asUInt64(), out);
        break;
    case Json::realValue:
        out += Json::valueToString(value.asDouble());
        break;
    case Json::stringValue: {
        const char* begin = nullptr;
        const char* end = nullptr;
        value.getString(&begin, &end);
        appendText({begin, static_cast<std::size_t>(end - begin)}, out);
        break;
    }
    case Json::arrayValue:
        return appendElements(value, levels - 1, out);
    case Json::objectValue:
        return appendMembers(value, levels - 1, out);
    }
    return true;
}
