#pragma once

#include <string>
#include <vector>

/// Texts that JSON writers and readers are known to stumble over.
inline std::vector<std::string> awkwardTexts()
{
    return {
        "",
        " \t\r\n",
        "\"quoted\" \\ / \b\f",
        std::string("NUL \0 inside", 12),
        "\x01\x1f\x7f",
        "[{\"appID\":1}]",
        "\xc3\xa9 e\xcc\x81",                            // composed and decomposed
        "\xe5\xbc\xa0\xe4\xb8\x89",                      // Chinese
        "\xd8\xb9\xd8\xb1\xd8\xa8\xd9\x8a \xe2\x80\x8f", // right to left, and its mark
        "\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x92\xbb",  // joined emoji
        "\xf4\x8f\xbf\xbf",                              // U+10FFFF
        "\xef\xbf\xbe\xef\xbf\xbf",                      // noncharacters
        "\xe2\x80\xa8\xe2\x80\xa9",                      // line and paragraph separator
        "\xef\xbb\xbf mark in front",                    // byte order mark
        std::string(5000, 'x'),
    };
}
