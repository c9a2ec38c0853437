#include "pavo_base/JsonScanner.h"

namespace {

/// As many as are certain to fit 64 bits.
constexpr int kMaxDigits = 18;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
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

bool JsonScanner::integer(Json::Value& out)
{
    const bool isNegative = take('-');
    const char* const begin = m_at;
    Json::Int64 number = 0;
    while (m_at != m_end && isDigit(*m_at) && m_at - begin < kMaxDigits)
        number = 10 * number + (*m_at++ - '0');
    // What goes on is a longer number or no integer.
    const bool goesOn =
        m_at != m_end && (isDigit(*m_at) || *m_at == '.' || *m_at == 'e' || *m_at == 'E');
    const bool hasLeadingZero = m_at - begin > 1 && *begin == '0';
    if (m_at == begin || goesOn || hasLeadingZero)
        return false;
    out = Json::Value(isNegative ? -number : number);
    return true;
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
        return integer(out);
    }
}
