#include "ipc/KTProcessMessage.h"
#include "ipc/KTMessageBuilders.h"
#include "pavo_base/JSONUtils.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

Json::Value parsed(const std::string& text)
{
    Json::Value value;
    EXPECT_TRUE(JSONUtils::parseJSON(text, value)) << text;
    return value;
}

} // namespace

TEST(KTProcessMessage, UntouchedMessageIsWrittenWithItsDefaults)
{
    const Json::Value root = parsed(KTProcessMessage().toJson());
    EXPECT_EQ(root["name"], Json::Value(""));
    EXPECT_EQ(root["source"], Json::Value("lx"));
    EXPECT_EQ(root["sequence"], Json::Value(0));
    EXPECT_EQ(root["arguments"], Json::Value(Json::arrayValue));
    EXPECT_EQ(root.size(), 4U);
}

TEST(KTProcessMessage, TextIsCompact)
{
    EXPECT_EQ(KTProcessMessage().toJson(),
              R"({"arguments":[],"name":"","sequence":0,"source":"lx"})");
}

TEST(KTProcessMessage, EmptyObjectIsAMessageWithoutNameAndSource)
{
    KTProcessMessage message;
    message.name = "before";
    message.sequence = 5;
    ASSERT_TRUE(message.fromJson(QStringLiteral("{}")));
    EXPECT_EQ(message.name, "");
    EXPECT_EQ(message.source, "");
    EXPECT_EQ(message.sequence, 0);
    EXPECT_TRUE(message.arguments.isNull());
}

TEST(KTProcessMessage, TextThatIsNoJsonLeavesTheRecordAsConstructed)
{
    for (const char* text :
         {"abc", "", "{", "[1,2", "{\"name\":\"a\"} x", "{'name':'a'}", "nullx"}) {
        KTProcessMessage message;
        message.name = "before";
        message.source = "host";
        message.sequence = 7;
        message.arguments = 1;
        EXPECT_FALSE(message.fromJson(QString::fromUtf8(text))) << text;
        EXPECT_EQ(message.name, "") << text;
        EXPECT_EQ(message.source, "lx") << text;
        EXPECT_EQ(message.sequence, 0) << text;
        EXPECT_TRUE(message.arguments.isNull()) << text;
    }
}

TEST(KTProcessMessage, EveryKeyIsRead)
{
    KTProcessMessage message;
    ASSERT_TRUE(message.fromJson(QStringLiteral(
        R"({"name":"Login","source":"host","sequence":9223372036854775807,"arguments":[1,"a"]})")));
    EXPECT_EQ(message.name, "Login");
    EXPECT_EQ(message.source, "host");
    EXPECT_EQ(message.sequence, std::numeric_limits<Json::Int64>::max());
    EXPECT_EQ(message.arguments, parsed(R"([1,"a"])"));
}

TEST(KTProcessMessage, MistypedKeysReadAsMissing)
{
    KTProcessMessage message;
    ASSERT_TRUE(message.fromJson(
        QStringLiteral(R"({"name":1,"source":["x"],"sequence":"7","arguments":null})")));
    EXPECT_EQ(message.name, "");
    EXPECT_EQ(message.source, "");
    EXPECT_EQ(message.sequence, 0);
    EXPECT_TRUE(message.arguments.isNull());
}

TEST(KTProcessMessage, DocumentsThatAreNoObjectAreMessagesWithoutName)
{
    for (const char* text : {"[]", "[{\"name\":\"Login\"}]", "null", "1", "\"Login\"", "true"}) {
        KTProcessMessage message;
        EXPECT_TRUE(message.fromJson(QString::fromUtf8(text))) << text;
        EXPECT_EQ(message.name, "") << text;
    }
}

TEST(KTProcessMessage, ArgumentsAreTakenAsTheyAre)
{
    for (const char* arguments : {"{\"a\":1}", "\"text\"", "3", "true", "[]", "[[],{}]"}) {
        KTProcessMessage message;
        ASSERT_TRUE(message.fromJson(
            QStringLiteral("{\"arguments\":%1}").arg(QString::fromUtf8(arguments))));
        EXPECT_EQ(message.arguments, parsed(arguments)) << arguments;
    }
}

TEST(KTProcessMessage, ArgumentsAreWrittenAsTheyStand)
{
    for (const char* arguments : {"{\"a\":1}", "\"text\"", "3", "true", "[]", "[[],{}]"}) {
        KTProcessMessage message;
        message.arguments = parsed(arguments);
        EXPECT_EQ(parsed(message.toJson())["arguments"], parsed(arguments)) << arguments;
    }
}

TEST(KTProcessMessage, OnlyAnArrayHasPositions)
{
    KTProcessMessage message;
    EXPECT_EQ(message.argumentCount(), 0U);
    message.arguments = parsed(R"({"a":1,"b":2})");
    EXPECT_EQ(message.argumentCount(), 0U);
    message.arguments = parsed("[1,2,3]");
    EXPECT_EQ(message.argumentCount(), 3U);
}

TEST(KTProcessMessage, BuilderReplacesNameAndArguments)
{
    KTProcessMessage message;
    message.arguments = "left over";
    const std::string text =
        message.build("Some", 1, 2U, true, std::string("b\0c", 3), QStringLiteral("\u4F60"));
    const Json::Value root = parsed(text);
    EXPECT_EQ(root["name"].asString(), "Some");
    ASSERT_EQ(root["arguments"].size(), 5U);
    EXPECT_TRUE(root["arguments"][2].isBool());
    EXPECT_EQ(root["arguments"][3].asString(), std::string("b\0c", 3));
    EXPECT_EQ(root["arguments"][4].asString(), "\xE4\xBD\xA0");
    EXPECT_NE(text.find("\xE4\xBD\xA0"), std::string::npos) << "written as UTF-8, not escaped";
}

TEST(KTProcessMessage, StartupCompletedKeepsTheUnsignedCode)
{
    KTProcessMessage message;
    const Json::Value root = parsed(KTMessageBuilders::startupCompleted(
        message, std::numeric_limits<unsigned int>::max(), QStringLiteral("9.1")));
    EXPECT_EQ(root["name"].asString(), "StartupCompleted");
    EXPECT_EQ(root["arguments"], parsed(R"([4294967295,"9.1"])"));
    EXPECT_EQ(root["sequence"].asInt(), 0);
    EXPECT_EQ(root["source"].asString(), "lx");
}

TEST(KTProcessMessage, CopiesAreIndependent)
{
    KTProcessMessage first;
    first.build("Some", 1);
    KTProcessMessage second = first;
    second.arguments.append(2);
    second.name = "Other";
    EXPECT_EQ(first.arguments.size(), 1U);
    EXPECT_EQ(first.name, "Some");
}
