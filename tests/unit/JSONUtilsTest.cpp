#include "pavo_base/JSONUtils.h"
#include "tests/support/Memory.h"

#include <gtest/gtest.h>
#include <json/writer.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <locale>
#include <optional>
#include <thread>
#include <vector>

using namespace std::string_literals;

namespace {

Json::Value parsed(const std::string& text)
{
    Json::Value value;
    EXPECT_TRUE(JSONUtils::parseJSON(text, value)) << text;
    return value;
}

std::string nested(int levels)
{
    return std::string(static_cast<std::size_t>(levels), '[') +
           std::string(static_cast<std::size_t>(levels), ']');
}

// What each accessor makes of a value; nothing means the default.
struct Reading
{
    const char* json;
    std::optional<std::string> text = {};
    std::optional<int> asInt = {};
    std::optional<unsigned> asUInt = {};
    std::optional<Json::Int64> asInt64 = {};
    std::optional<bool> asBool = {};
};

constexpr auto kNone = std::nullopt;
constexpr Json::Int64 kMaxInt64 = std::numeric_limits<Json::Int64>::max();
constexpr Json::Int64 kMinInt64 = std::numeric_limits<Json::Int64>::min();

const Reading kReadings[] = {
    {"null"},
    {"true", kNone, kNone, kNone, kNone, true},
    {"false", kNone, kNone, kNone, kNone, false},
    {R"("")", ""},
    {R"("text")", "text"},
    {R"("1")", "1"},
    {R"("true")", "true"},
    {"0", kNone, 0, 0, 0},
    {"1", kNone, 1, 1, 1},
    {"-1", kNone, -1, kNone, -1},
    {"3.0", kNone, 3, 3, 3},
    {"-0.0", kNone, 0, 0, 0},
    {"3.5"},
    {"-0.5"},
    {"2147483647", kNone, INT_MAX, INT_MAX, INT_MAX},
    {"2147483648", kNone, kNone, 2147483648U, 2147483648},
    {"-2147483648", kNone, INT_MIN, kNone, INT_MIN},
    {"-2147483649", kNone, kNone, kNone, -2147483649},
    {"4294967295", kNone, kNone, UINT_MAX, UINT_MAX},
    {"4294967296", kNone, kNone, kNone, 4294967296},
    {"2147483648.0", kNone, kNone, 2147483648U, 2147483648},
    {"4294967296.0", kNone, kNone, kNone, 4294967296},
    {"9223372036854775807", kNone, kNone, kNone, kMaxInt64},
    {"-9223372036854775808", kNone, kNone, kNone, kMinInt64},
    {"9223372036854775808"},
    {"9223372036854775808.0"},
    {"18446744073709551615"},
    {"18446744073709551616"},
    {"1e3", kNone, 1000, 1000, 1000},
    {"1e10", kNone, kNone, kNone, 10000000000},
    {"1e300"},
    {"-1e300"},
    {"[]"},
    {"[1,2]"},
    {"{}"},
    {R"({"key":1})"},
};

template<typename Key>
void expectReading(const Key& key, const Json::Value& container, const Reading& expected)
{
    EXPECT_EQ(JSONUtils::optString(key, container), expected.text.value_or(""));
    EXPECT_EQ(JSONUtils::optString(key, container, "other"), expected.text.value_or("other"));
    EXPECT_EQ(JSONUtils::optInt(key, container), expected.asInt.value_or(0));
    EXPECT_EQ(JSONUtils::optInt(key, container, -7), expected.asInt.value_or(-7));
    EXPECT_EQ(JSONUtils::optUInt(key, container), expected.asUInt.value_or(0));
    EXPECT_EQ(JSONUtils::optUInt(key, container, 7), expected.asUInt.value_or(7));
    EXPECT_EQ(JSONUtils::optInt64(key, container), expected.asInt64.value_or(0));
    EXPECT_EQ(JSONUtils::optInt64(key, container, -7), expected.asInt64.value_or(-7));
    EXPECT_EQ(JSONUtils::optBool(key, container), expected.asBool.value_or(false));
    EXPECT_EQ(JSONUtils::optBool(key, container, true), expected.asBool.value_or(true));
}

const Reading kMissing = {"nothing"};

} // namespace

TEST(JSONUtils, everyAccessorReadsItsTypeAndNothingElse)
{
    for (const Reading& reading : kReadings) {
        SCOPED_TRACE(reading.json);
        const Json::Value object = parsed(R"({"before":0,"key":)"s + reading.json + "}");
        expectReading("key", object, reading);
        EXPECT_EQ(JSONUtils::optObject("key", object), parsed(reading.json));

        const Json::Value array = parsed("[[],"s + reading.json + "]");
        expectReading(1, array, reading);
        EXPECT_EQ(JSONUtils::optObject(1, array), parsed(reading.json));
    }
}

TEST(JSONUtils, missingMembersAndElementsReadAsDefault)
{
    const Json::Value object = parsed(R"({"key":1,"0":2,"":3})");
    expectReading("Key", object, kMissing);
    expectReading("key\0"s, object, kMissing);
    EXPECT_TRUE(JSONUtils::optObject("Key", object).isNull());

    const Json::Value array = parsed("[1,2]");
    for (const Json::ArrayIndex index : {2U, 3U, 1000000U, UINT_MAX}) {
        expectReading(index, array, kMissing);
        EXPECT_TRUE(JSONUtils::optObject(index, array).isNull());
    }
    EXPECT_EQ(array.size(), 2U);
}

TEST(JSONUtils, containersOfAnotherKindReadAsDefault)
{
    for (const Reading& reading : kReadings) {
        SCOPED_TRACE(reading.json);
        const Json::Value container = parsed(reading.json);
        if (!container.isObject()) {
            expectReading("key", container, kMissing);
            EXPECT_TRUE(JSONUtils::optObject("key", container).isNull());
            EXPECT_FALSE(JSONUtils::has("key", container));
        }
        if (!container.isArray()) {
            expectReading(0, container, kMissing);
            EXPECT_TRUE(JSONUtils::optObject(0, container).isNull());
        }
        EXPECT_EQ(container, parsed(reading.json));
    }
}

TEST(JSONUtils, keysAreBytes)
{
    Json::Value object;
    JSONUtils::put("", 1, object);
    JSONUtils::put("a\0b"s, 2, object);
    JSONUtils::put("\xE9", 3, object);
    EXPECT_EQ(JSONUtils::optInt("", object), 1);
    EXPECT_EQ(JSONUtils::optInt(std::string_view(), object), 1);
    EXPECT_EQ(JSONUtils::optInt("a\0b"s, object), 2);
    EXPECT_FALSE(JSONUtils::has("a", object));
    EXPECT_EQ(JSONUtils::optInt("\xE9", object), 3);
    // The view ends where it says, whatever follows.
    EXPECT_EQ(JSONUtils::optInt(std::string_view("\xE9more", 1), object), 3);
}

TEST(JSONUtils, hasSeesNullMembers)
{
    const Json::Value object = parsed(R"({"key":null})");
    EXPECT_TRUE(JSONUtils::has("key", object));
    EXPECT_FALSE(JSONUtils::has("other", object));
}

TEST(JSONUtils, tellsArraysAndObjects)
{
    for (const Reading& reading : kReadings) {
        const Json::Value value = parsed(reading.json);
        EXPECT_EQ(JSONUtils::isJSONArray(value), reading.json[0] == '[') << reading.json;
        EXPECT_EQ(JSONUtils::isJSONObject(value), reading.json[0] == '{') << reading.json;
    }
}

TEST(JSONUtils, refusesWhatIsNoDocument)
{
    const std::string texts[] = {
        "", " ", "\n", "\xEF\xBB\xBF", "\0[1]"s,
        // cut off
        "[", "{", "\"", "\"abc", "\"\\", "[1", "[1,", R"({"a")", R"({"a":)", R"({"a":1)", "tru",
        "-a",
        // trailing text
        "nullx", "{} x", "truefalse", "[1]]", "1 2", R"("a" "b")", "1-2", "{}{}", "[1]\f",
        "[]\xC2\xA0",
        // trailing and doubled commas
        "[1,]", "[1 , ]", R"({"a":1,})", R"({"":1,})", "{\"\":1,\r\n\t }", "[,]", "{,}", "[1,,2]",
        // comments
        "/**/1", "1/**/", "//x\n1", "1//x", "[/**/1]", "[1/**/]", "[1/**/,2]", R"({/**/"a":1})",
        R"({"a"/**/:1})", R"({"a":/**/1})", R"({"a":1/**/})", R"({"a":1/**/,"b":2})",
        R"({"a":1/**/5"b":2})", "/", "[1]/",
        // other dialects
        "'a'", "{'a':1}", "[']", "{a:1}", "{1:1}", "NaN", "[NaN]", "Infinity", "-Infinity", "True",
        "0x10", R"({"a" 1})", "[1 2]", "]", "}", "[}", "{]",
        // texts
        R"("\x")", R"("\u12")", R"("\u12G4")", R"("\ud83d")", R"("\ud83dx")", R"("\ud83d\ude")",
        // numbers
        ".5", "1e", "1.0e+", "--1", "1e5.5", "1e400", "-1e400"};
    for (const std::string& text : texts) {
        Json::Value value = 5;
        EXPECT_FALSE(JSONUtils::parseJSON(text, value)) << text;
        EXPECT_TRUE(value.isNull()) << text;

        value = 5;
        EXPECT_FALSE(JSONUtils::parseJSON(text.data(), static_cast<int>(text.size()), value))
            << text;
        EXPECT_TRUE(value.isNull()) << text;
    }
}

TEST(JSONUtils, acceptsEveryKindOfRootAndBlanksAround)
{
    for (const Reading& reading : kReadings) {
        const Json::Value value = parsed(reading.json);
        EXPECT_EQ(parsed(" \t\r\n"s + reading.json + " \t\r\n"), value);
    }
    EXPECT_EQ(parsed(R"("/**/,]//")"), "/**/,]//");
    EXPECT_EQ(parsed(R"(["\\\"",",]"])")[0], "\\\"");
    EXPECT_EQ(parsed(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
}

// Where jsoncpp does not follow the JSON grammar to the letter. Nothing depends on these; they are
// here so that another jsoncpp does not change them unnoticed.
TEST(JSONUtils, dialectOfJsoncpp)
{
    const struct
    {
        std::string text;
        Json::Value value;
    } lax[] = {
        {"01", 1},
        {"-01", -1},
        {"+1", 1.0},
        {"-", 0},
        {"[-]", parsed("[0]")},
        {"1.", 1.0},
        {"-.5", -0.5},
        {"\"\t\n\x01\"", "\t\n\x01"},
        {"\"\xFF\"", "\xFF"},
        {"\xEF\xBB\xBF[1]", parsed("[1]")},
        {"1e-400", 0.0},
        // A lone low surrogate becomes three bytes that are no UTF-8, a wrong pair some character.
        {R"("\udc00")", "\xED\xB0\x80"},
        {R"("\ud800\u0041")", "\xF0\x90\x81\x81"},
    };
    for (const auto& row : lax)
        EXPECT_EQ(parsed(row.text), row.value) << row.text;
}

TEST(JSONUtils, decimalPointsAreReadWhateverTheLocale)
{
    struct Comma : std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
    const std::string text = R"({"a":[3.0,-1234.5,1e3,12345678],"b":0.25})";
    const Json::Value value = parsed(text);
    const std::string written = JSONUtils::stringFromJSON(value);
    std::locale::global(before);
    EXPECT_EQ(JSONUtils::optInt(0, JSONUtils::optObject("a", value)), 3);
    EXPECT_EQ(written, R"({"a":[3.0,-1234.5,1000.0,12345678],"b":0.25})");
}

TEST(JSONUtils, numbersBeyondTheIntegersBecomeDoubles)
{
    EXPECT_EQ(parsed("18446744073709551615").asUInt64(), 18446744073709551615U);
    EXPECT_EQ(parsed("18446744073709551616").type(), Json::realValue);
    EXPECT_EQ(parsed("-9223372036854775809").type(), Json::realValue);
}

TEST(JSONUtils, lastOfDuplicateKeysCounts)
{
    EXPECT_EQ(parsed(R"({"a":{"x":1},"a":{"y":2}})"), parsed(R"({"a":{"y":2}})"));
    EXPECT_EQ(parsed(R"({"a":[1,2],"a":[3]})"), parsed(R"({"a":[3]})"));
    EXPECT_EQ(parsed(R"({"a":[1],"a":null})"), parsed(R"({"a":null})"));
}

TEST(JSONUtils, readsUpToTheFirstNulByte)
{
    Json::Value value;
    EXPECT_TRUE(JSONUtils::parseJSON("[1]\0garbage"s, value));
    EXPECT_EQ(value, parsed("[1]"));
    EXPECT_TRUE(JSONUtils::parseJSON("[2]\0garbage", 11, value));
    EXPECT_EQ(value, parsed("[2]"));
    EXPECT_TRUE(JSONUtils::parseJSON("[3] rest", 3, value));
    EXPECT_EQ(value, parsed("[3]"));
    EXPECT_FALSE(JSONUtils::parseJSON("\"a\0b\"", 5, value));

    const std::string region = "{}" + std::string(102398, '\0');
    EXPECT_TRUE(JSONUtils::parseJSON(region.data(), static_cast<int>(region.size()), value));
    EXPECT_TRUE(value.isObject());
}

TEST(JSONUtils, noDataIsNoDocument)
{
    const char text[] = "[1]";
    const struct
    {
        const char* data;
        int length;
    } rows[] = {{nullptr, 0}, {nullptr, 5}, {text, 0}, {text, -1}, {text, INT_MIN}};
    for (const auto& row : rows) {
        Json::Value value = 5;
        EXPECT_FALSE(JSONUtils::parseJSON(row.data, row.length, value)) << row.length;
        EXPECT_TRUE(value.isNull());
    }
}

TEST(JSONUtils, mayParseATextIntoItsOwnValue)
{
    Json::Value value(R"({"a":[1]})");
    const char* begin = nullptr;
    const char* end = nullptr;
    ASSERT_TRUE(value.getString(&begin, &end));
    EXPECT_TRUE(JSONUtils::parseJSON(begin, static_cast<int>(end - begin), value));
    EXPECT_EQ(value, parsed(R"({"a":[1]})"));
}

TEST(JSONUtils, depthIsLimited)
{
    Json::Value value;
    EXPECT_TRUE(JSONUtils::parseJSON(nested(JSONUtils::kMaxDepth), value));
    EXPECT_EQ(JSONUtils::stringFromJSON(value), nested(JSONUtils::kMaxDepth));
    for (const int levels : {JSONUtils::kMaxDepth + 1, 100000}) {
        EXPECT_FALSE(JSONUtils::parseJSON(nested(levels), value)) << levels;
        EXPECT_TRUE(value.isNull());
    }
    // A reader that gave up once reads on as before.
    EXPECT_EQ(parsed("[1]")[0], 1);

    std::string objects = "1";
    for (int level = 1; level < JSONUtils::kMaxDepth; ++level)
        objects.insert(0, R"({"a":)").append("}");
    EXPECT_EQ(JSONUtils::stringFromJSON(parsed(objects)), objects);
    EXPECT_FALSE(JSONUtils::parseJSON("[" + objects + "]", value));

    Json::Value deep = parsed(objects);
    Json::Value deeper;
    deeper.append(std::move(deep));
    EXPECT_EQ(JSONUtils::stringFromJSON(deeper), "");
}

TEST(JSONUtils, putTakesEveryType)
{
    Json::Value object;
    JSONUtils::put("literal", "text", object);
    JSONUtils::put("string", "te\0xt"s, object);
    JSONUtils::put("int", -1, object);
    JSONUtils::put("uint", 4294967295U, object);
    JSONUtils::put("int64", kMinInt64, object);
    JSONUtils::put("bool", true, object);
    JSONUtils::put("value", parsed("[1]"), object);
    JSONUtils::put("null", Json::Value(), object);
    EXPECT_EQ(JSONUtils::stringFromJSON(object),
              R"({"bool":true,"int":-1,"int64":-9223372036854775808,"literal":"text","null":null,)"
              R"("string":"te\u0000xt","uint":4294967295,"value":[1]})");
}

TEST(JSONUtils, putReplacesAndTakesTheObjectItself)
{
    Json::Value object;
    JSONUtils::put("a", 1, object);
    JSONUtils::put("a", "new", object);
    JSONUtils::put("self", object, object);
    EXPECT_EQ(object, parsed(R"({"a":"new","self":{"a":"new"}})"));
}

TEST(JSONUtils, putMakesAnObjectOfAnythingElse)
{
    for (const Reading& reading : kReadings) {
        Json::Value value = parsed(reading.json);
        if (value.isObject())
            continue;
        JSONUtils::put("a", 1, value);
        EXPECT_EQ(value, parsed(R"({"a":1})")) << reading.json;
    }
}

TEST(JSONUtils, textsSurviveARoundTrip)
{
    const struct
    {
        std::string json;
        std::string text;
        std::string written;
    } rows[] = {
        {R"("\u0000")", "\0"s, R"("\u0000")"},
        {R"("a\u0000b")", "a\0b"s, R"("a\u0000b")"},
        {R"("\u00e9")", "\xC3\xA9", "\"\xC3\xA9\""},
        {R"("\u4E2D")", "\xE4\xB8\xAD", "\"\xE4\xB8\xAD\""},
        {R"("\u2028")", "\xE2\x80\xA8", "\"\xE2\x80\xA8\""},
        {R"("\uFFFF")", "\xEF\xBF\xBF", "\"\xEF\xBF\xBF\""},
        {R"("\ud83d\ude00")", "\xF0\x9F\x98\x80", "\"\xF0\x9F\x98\x80\""},
        {"\"\xF4\x8F\xBF\xBF\"", "\xF4\x8F\xBF\xBF", "\"\xF4\x8F\xBF\xBF\""},
        {R"("\u007f\u001f")", "\x7F\x1F", "\"\x7F\\u001f\""},
        {R"("\"\\\/\n")", "\"\\/\n", R"("\"\\/\n")"},
        // Bytes that are no UTF-8 pass through, so that whoever wrote them gets them back.
        {"\"\xFF\xC3\"", "\xFF\xC3", "\"\xFF\xC3\""},
    };
    for (const auto& row : rows) {
        const Json::Value value = parsed("[" + row.json + "]");
        EXPECT_EQ(JSONUtils::optString(0, value), row.text) << row.json;
        EXPECT_EQ(JSONUtils::stringFromJSON(value), "[" + row.written + "]");
        EXPECT_EQ(parsed(JSONUtils::stringFromJSON(value)), value);
    }
}

TEST(JSONUtils, writesCompactText)
{
    const struct
    {
        Json::Value value;
        const char* text;
    } rows[] = {
        {Json::Value(), "null"},
        {Json::Value(Json::arrayValue), "[]"},
        {Json::Value(Json::objectValue), "{}"},
        {parsed(R"({ "b" : [ 1 , -2 , true , null ] , "a" : { "c" : "d" } })"),
         R"({"a":{"c":"d"},"b":[1,-2,true,null]})"},
        {Json::Value(18446744073709551615U), "18446744073709551615"},
        {Json::Value(3.0), "3.0"},
        {Json::Value(0.5), "0.5"},
        {Json::Value(std::numeric_limits<double>::quiet_NaN()), "null"},
        {Json::Value(std::numeric_limits<double>::infinity()), "1e+9999"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(JSONUtils::stringFromJSON(row.value), row.text);

    Json::Value commented(1);
    commented.setComment("// remark"s, Json::commentBefore);
    EXPECT_EQ(JSONUtils::stringFromJSON(commented), "1");
}

TEST(JSONUtils, writesWhatJsoncppWrites)
{
    Json::StreamWriterBuilder jsoncpp;
    jsoncpp["indentation"] = "";
    jsoncpp["emitUTF8"] = true;
    Json::Value value;
    for (int c = 0; c < 256; ++c) {
        const std::string text = "a"s + static_cast<char>(c) + 'b';
        value["texts"][text] = text;
    }
    for (const double number : {0.0, -0.0, 0.1, 1.0, -2.5e-7, 1e15, 1e16, 1e17,
                                1.7976931348623157e308, 4.9e-324, 12345678901234567890.0, 1.0 / 3})
        value["doubles"].append(number);
    for (const Json::Value& number : {Json::Value(kMinInt64), Json::Value(Json::Value::maxInt64),
                                      Json::Value(Json::Value::maxUInt64), Json::Value(0)})
        value["integers"].append(number);
    value["holes"][3] = 1;
    value["holes"][5][2] = Json::Value(Json::arrayValue);
    EXPECT_EQ(JSONUtils::stringFromJSON(value), Json::writeString(jsoncpp, value));
}

TEST(JSONUtils, threadsDoNotDisturbEachOther)
{
    constexpr int kThreads = 8;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            for (int round = 0; round < 300; ++round) {
                Json::Value value;
                const std::string text = R"({"name":"t\n)" + std::to_string(thread) +
                                         R"(","round":)" + std::to_string(round) + "}";
                EXPECT_TRUE(JSONUtils::parseJSON(text, value));
                EXPECT_EQ(JSONUtils::stringFromJSON(value), text);
                EXPECT_FALSE(JSONUtils::parseJSON("[1,", value));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(JSONUtils, threadsThatHaveEndedLeaveNothing)
{
    if (!kHeapIsMeasurable)
        GTEST_SKIP() << "a sanitizer's heap cannot be measured";
    const auto useOnAThread = [] {
        std::thread([] { EXPECT_EQ(parsed("[1.5]")[0], 1.5); }).join();
    };
    useOnAThread();
    const std::size_t before = heapBytesInUse();
    for (int i = 0; i < 100; ++i)
        useOnAThread();
    // Less than half of what a reader for each would take.
    EXPECT_LT(heapBytesInUse(), before + 50 * 1024);
}

TEST(JSONUtilsDeathTest, worksInExitHandlers)
{
    // log4cplus' threads are there from the start: the child has to begin anew.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto useAtExit = [] {
        parsed("[0.5]"); // what this thread keeps is gone at exit
        std::atexit([] {
            std::fputs(JSONUtils::stringFromJSON(parsed("[\"late\",0.5]")).c_str(), stderr);
        });
        std::exit(0);
    };
    EXPECT_EXIT(useAtExit(), testing::ExitedWithCode(0), "late.,0.5");
}
