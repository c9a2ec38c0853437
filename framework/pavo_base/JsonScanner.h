#pragma once

#include <json/value.h>

#include <string_view>

/// Reads plain JSON faster than a parser that has to know all of it.
///
/// Plain are objects, arrays, texts without backslashes, numbers that fit, true, false and null,
/// nested up to kMaxDepth levels. At anything else it gives up, be it an error or not: it
/// is no judge of what is valid. What it reads means to it what it means to jsoncpp.
class JsonScanner
{
public:
    static constexpr int kMaxDepth = 16;

    JsonScanner(const char* begin, const char* end)
        : m_at(begin)
        , m_end(end)
    {
    }

    /// Reads the one value that the bytes are. After false, \a out may hold anything.
    bool read(Json::Value& out);

private:
    char next();
    bool take(char c);
    bool takeWord(std::string_view word);
    bool text(std::string_view& out);
    bool skipOneOf(std::string_view characters);
    bool digits();
    bool number(Json::Value& out);
    bool members(Json::Value& out, int levels);
    bool elements(Json::Value& out, int levels);
    bool value(Json::Value& out, int levels);

    const char* m_at;
    const char* const m_end;
};
