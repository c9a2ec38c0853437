#include "pavo_base/JsonScanner.h"
#include "pavo_base/JSONUtils.h"

#include <gtest/gtest.h>

#include <random>

namespace {

bool scan(const std::string& text, Json::Value& out)
{
    return JsonScanner(text.data(), text.data() + text.size()).read(out);
}

std::string nested(int levels)
{
    const auto count = static_cast<std::size_t>(levels - 1);
    return std::string(count, '[') + '1' + std::string(count, ']');
}

/// What the scanner reads, jsoncpp reads as well, and as the same.
void expectAgreement(const std::string& text)
{
    Json::Value scanned;
    if (!scan(text, scanned))
        return;
    Json::Value parsed;
    // The second element is none for the scanner.
    ASSERT_TRUE(JSONUtils::parseJSON('[' + text + R"(,"\n"])", parsed)) << text;
    ASSERT_EQ(parsed.size(), 2U) << text;
    EXPECT_EQ(scanned, parsed[0]) << text;
}

} // namespace

TEST(JsonScannerTest, ReadsWhatHostsSend)
{
    for (
        const char* text :
        {R"({"name":"Login","source":"host","sequence":17,"arguments":[{"pin":"p","id":-3},null]})",
         " { } ", "[\n]\t", "[ 1 , -2 ,\r\n true , false , null , \"\" ]", "0", "-0", "null",
         "{\"a\":{\"b\":[[],{\"c\":\"\xE4\xBD\xA0\x7F\"}]},\"a\":2}", "9223372036854775807",
         "-9223372036854775808", "1.0", "-0.0", "0.1", "1e3", "[1E-3,-12.5e+2]",
         "1.7976931348623157e308", "4.9e-324", "123456789012345678901234567890.5"}) {
        Json::Value scanned;
        EXPECT_TRUE(scan(text, scanned)) << text;
        expectAgreement(text);
    }
    Json::Value scanned;
    EXPECT_TRUE(scan(nested(JsonScanner::kMaxDepth), scanned));
    expectAgreement(nested(JsonScanner::kMaxDepth));
}

TEST(JsonScannerTest, LeavesAnythingElseToOthers)
{
    for (const std::string text : {"",
                                   " ",
                                   "{",
                                   "[",
                                   "\"",
                                   "\"a",
                                   "{\"a\"",
                                   "{\"a\":",
                                   "{\"a\":1",
                                   "{\"a\":1,",
                                   "{\"a\":1,}",
                                   "[1",
                                   "[1,",
                                   "[1,]",
                                   "[,1]",
                                   "{,}",
                                   "{a:1}",
                                   "{1:1}",
                                   "[1 2]",
                                   "[1]x",
                                   "1.",
                                   "1.e3",
                                   ".5",
                                   "1e",
                                   "1e+",
                                   "1e400",
                                   "1e-400",
                                   "-",
                                   "+1",
                                   "01",
                                   "-01",
                                   "00",
                                   "9223372036854775808",
                                   "nul",
                                   "nullx",
                                   "True",
                                   "// c\n1",
                                   "[1/**/]",
                                   "'a'",
                                   "\"a\\n\"",
                                   "\"\\u0041\"",
                                   "\"\n\"",
                                   "\xEF\xBB\xBF[]"}) {
        Json::Value scanned;
        EXPECT_FALSE(scan(text, scanned)) << text;
    }
    Json::Value scanned;
    EXPECT_FALSE(scan(std::string("1\0", 2), scanned));
    EXPECT_FALSE(scan(std::string("\"\0\"", 3), scanned));
    EXPECT_FALSE(scan(nested(JsonScanner::kMaxDepth + 1), scanned));
    EXPECT_FALSE(scan(std::string(1000000, '['), scanned));
}

TEST(JsonScannerTest, NeverDisagreesAboutABrokenText)
{
    const std::string original =
        R"({"name":"Login","sequence":-120,"arguments":[{"pin":"a b","on":true},null,[1,false]]})";
    const std::string alphabet = "\"\\{}[],: \n019-+.eEtfnuxa/'\x01\xE4\x7F";
    std::mt19937 random{20240229};
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (int i = 0; i < 20000; ++i) {
        std::string text = original;
        for (std::size_t edits = 1 + below(3); edits > 0; --edits) {
            const std::size_t place = below(text.size());
            switch (below(3)) {
            case 0:
                text.erase(place, 1 + below(4));
                break;
            case 1:
                text.insert(place, 1, alphabet[below(alphabet.size())]);
                break;
            default:
                text[place] = alphabet[below(alphabet.size())];
            }
        }
        expectAgreement(text);
    }
}
