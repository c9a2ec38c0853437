#pragma once

#include "pavo_base/Export.h"

#include <QtCore/QString>

#include <string>

/// Small text helpers. Any thread may call; the locale never matters.
class PAVO_BASE_EXPORT TextUtils
{
public:
    TextUtils() = delete;

    /// \a text without the ASCII blanks (space, \\t, \\n, \\v, \\f, \\r) at both ends.
    static std::string trim(const std::string& text);

    /// \a text with the ASCII letters in lower case; every other byte stays as it is.
    static std::string tolower(const std::string& text);

    /// \a text decoded from UTF-8. Each broken sequence becomes U+FFFD, NUL characters are kept
    /// and a byte order mark at the beginning is dropped.
    static QString utf8ToUnicode(const std::string& text);
};
