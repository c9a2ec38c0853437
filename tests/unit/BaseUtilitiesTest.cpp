#include "pavo_base/OSUtils.h"
#include "pavo_base/TextUtils.h"
#include "pavo_base/TimeCorrector.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>

using namespace std::string_literals;

TEST(TextUtils, trimTakesAsciiBlanksOffBothEnds)
{
    const struct
    {
        std::string text;
        std::string trimmed;
    } rows[] = {
        {"", ""},
        {" \t\n\v\f\r", ""},
        {"a", "a"},
        {" \t\n\v\f\ra b\tc \t\n\v\f\r", "a b\tc"},
        {"\0 a \0"s, "\0 a \0"s},
        // Blanks beyond ASCII stay: no-break space, ideographic space, the byte 0xA0 alone.
        {"\xC2\xA0"
         "a\xE3\x80\x80",
         "\xC2\xA0"
         "a\xE3\x80\x80"},
        {"\xA0", "\xA0"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TextUtils::trim(row.text), row.trimmed);
}

TEST(TextUtils, tolowerChangesAsciiLettersOnly)
{
    for (int code = 0; code < 256; ++code) {
        const char c = static_cast<char>(code);
        const char lower = std::strchr("ABCDEFGHIJKLMNOPQRSTUVWXYZ", c) && c != '\0'
                               ? static_cast<char>(code + 0x20)
                               : c;
        EXPECT_EQ(TextUtils::tolower("Z"s + c + "z"), "z"s + lower + "z") << code;
    }
    EXPECT_EQ(TextUtils::tolower(""), "");
    EXPECT_EQ(TextUtils::tolower("\xC3\x84\xC4\xB0I"), "\xC3\x84\xC4\xB0i");
}

TEST(TextUtils, utf8ToUnicodeDecodes)
{
    const struct
    {
        std::string text;
        std::u16string decoded;
    } rows[] = {
        {"", u""},
        {"abc", u"abc"},
        {"a\0b"s, u"a\0b"s},
        {"\xE4\xB8\xAD\xE6\x96\x87", u"\u4E2D\u6587"},
        {"\xF0\x9F\x98\x80", u"\U0001F600"},
        {"a\xFFz", u"a\uFFFDz"},
        {"\xEF\xBB\xBFz", u"z"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TextUtils::utf8ToUnicode(row.text), QString::fromStdU16String(row.decoded));
}

TEST(TimeCorrector, countsMillisecondsForward)
{
    using Clock = std::chrono::steady_clock;
    constexpr auto kPause = std::chrono::milliseconds(50);
    const Clock::time_point outerStart = Clock::now();
    const unsigned long long start = TimeCorrector::tickCount();
    std::this_thread::sleep_for(kPause);
    const unsigned long long passed = TimeCorrector::tickCount() - start;
    const auto outer =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - outerStart);
    EXPECT_GE(passed + 1, static_cast<unsigned long long>(kPause.count()));
    EXPECT_LE(passed, static_cast<unsigned long long>(outer.count()) + 1);
}

TEST(TimeCorrector, neverGoesBack)
{
    unsigned long long previous = TimeCorrector::tickCount();
    for (int round = 0; round < 10000; ++round) {
        const unsigned long long now = TimeCorrector::tickCount();
        ASSERT_GE(now, previous);
        previous = now;
    }
}

TEST(OSUtils, windowMessagesCanBeLetThroughAndHeldBack)
{
    constexpr unsigned kRegisteredMessage = 0xC123;
    EXPECT_TRUE(OSUtils::changeWindowMessageFilter(kRegisteredMessage, 1));
    EXPECT_TRUE(OSUtils::changeWindowMessageFilter(kRegisteredMessage, 2));
}
