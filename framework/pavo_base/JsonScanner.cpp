#include "pavo_base/JsonScanner.h"

#include <charconv>
#include <system_error>

namespace {

/// False when no Number can hold it. Unlike jsoncpp this reads a decimal point as one whatever the
/// program's locale.
template<typename Number>
bool readNumber(const char* begin, const char* end, Json::Value& out)
{
    Number number{};
    if (std::from_chars(begin, end, number).ec != std::errc())
        return false;
    out = Json::Value(number);
    return true;
}

} // namespace

bool JsonScanner::read(Json::Value& out)
{
    return value(out, kMaxDepth) && next() == '\0' && m_at == m_end;
}

// The character behind any blanks, or NUL, which is none that begins or ends anything.
char JsonScanner::next()
{
    while (m_at != m_end && (*m_at == ' ' || *m_at == '\t' || *m_at == '\n' || *m_at == '\r'))
        ++m_at;
    return m_at != m_end ? *m_at : '\0';
}

bool JsonScanner::take(char c)
{
    if (next() != c)
        return false;
    ++m_at;
    return true;
}

bool JsonScanner::takeWord(std::string_view word)
{
    if (std::string_view(m_at, static_cast<std::size_t>(m_end - m_at)).substr(0, word.size()) !=
        word)
        return false;
    m_at += word.size();
    return true;
}

bool JsonScanner::text(std::string_view& out)
{
    if (!take('"'))
        return false;
    const char* const begin = m_at;
    for (; m_at != m_end && *m_at != '\\' && static_cast<unsigned char>(*m_at) >= ' '; ++m_at) {
        if (*m_at == '"') {
            out = std::string_view(begin, static_cast<std::size_t>(m_at++ - begin));
            return true;
        }
    }
    return false;
}

bool JsonScanner::skipOneOf(std::string_view characters)
{
    if (m_at == m_end || characters.find(*m_at) == std::string_view::npos)
        return false;
    ++m_at;
    return true;
}

bool JsonScanner::digits()
{
    const char* const begin = m_at;
    while (m_at != m_end && *m_at >= '0' && *m_at <= '9')
        ++m_at;
    return m_at != begin;
}

bool JsonScanner::number(Json::Value& out)
{
    const char* const begin = m_at;
    skipOneOf("-");
    const char* const first = m_at;
    if (!digits() || (*first == '0' && m_at - first > 1))
        return false;
    const char* const integerEnd = m_at;
    if (skipOneOf(".") && !digits())
        return false;
    if (skipOneOf("eE")) {
        skipOneOf("+-");
        if (!digits())
            return false;
    }
    return m_at == integerEnd ? readNumber<Json::Int64>(begin, m_at, out)
                              : readNumber<double>(begin, m_at, out);
}

bool JsonScanner::members(Json::Value& out, int levels)
{
    out = Json::Value(Json::objectValue);
    if (take('}'))
        return true;
    do {
        std::string_view key;
        if (!text(key) || !take(':') ||
            !value(*out.demand(key.data(), key.data() + key.size()), levels))
            return false;
    } while (take(','));
    return take('}');
}

bool JsonScanner::elements(Json::Value& out, int levels)
{
    out = Json::Value(Json::arrayValue);
    if (take(']'))
        return true;
    do {
        if (!value(out.append(Json::Value()), levels))
            return false;
    } while (take(','));
    return take(']');
}

bool JsonScanner::value(Json::Value& out, int levels)
{
    switch (next()) {
    case '{':
        ++m_at;
        return levels > 1 && members(out, levels - 1);
    case '[':
        ++m_at;
        return levels > 1 && elements(out, levels - 1);
    case '"': {
        std::string_view read;
        if (!text(read))
            return false;
        out = Json::Value(read.data(), read.data() + read.size());
        return true;
    }
    case 't':
        out = true;
        return takeWord("true");
    case 'f':
        out = false;
        return takeWord("false");
    case 'n':
        out = Json::Value();
        return takeWord("null");
    default:
        return number(out);
    }
}
