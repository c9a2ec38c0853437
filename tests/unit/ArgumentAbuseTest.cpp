#include "pavo_base/JSONUtils.h"
#include "pavo_ui_base/QHotkey.h"
#include "tests/support/LoginFixture.h"

#include <json/value.h>

#include <map>

// Every position of every inbound message filled in turn with values of every type: nothing may
// crash or throw, and what comes out is what a missing or mistyped value reads as.

namespace {

using Lines = std::vector<std::string>;

/// A JSON value and what the rules read from it.
struct Value
{
    std::string json;
    std::string text;
    int number = 0;
    bool flag = false;
};

const std::string kLong(100000, 'l');

const std::vector<Value>& abuse()
{
    static const std::vector<Value> values = {{"null", "", 0, false},
                                              {"true", "", 0, true},
                                              {"false", "", 0, false},
                                              {"0", "", 0, false},
                                              {"1", "", 1, false},
                                              {"42", "", 42, false},
                                              {"-7", "", -7, false},
                                              {"2147483647", "", 2147483647, false},
                                              {"2147483648", "", 0, false},
                                              {"-2147483648", "", -2147483647 - 1, false},
                                              {"-2147483649", "", 0, false},
                                              {"18446744073709551615", "", 0, false},
                                              {"99999999999999999999999", "", 0, false},
                                              {"1e308", "", 0, false},
                                              {"3.0", "", 3, false},
                                              {"1.5", "", 0, false},
                                              {"-0.0", "", 0, false},
                                              {R"("")", "", 0, false},
                                              {R"("text")", "text", 0, false},
                                              {R"("7")", "7", 0, false},
                                              {R"("true")", "true", 0, false},
                                              {"\"" + kLong + "\"", kLong, 0, false},
                                              {"[]", "", 0, false},
                                              {"[1,\"a\"]", "", 0, false},
                                              {"{}", "", 0, false},
                                              {R"({"a":1})", "", 0, false}};
    return values;
}

/// One inbound message: good arguments, and the callback or complaints that any arguments lead to.
struct Message
{
    std::string name;
    std::vector<Value> good;
    std::function<Lines(const std::vector<Value>&)> outcome;
};

const Value& at(const std::vector<Value>& arguments, std::size_t index)
{
    static const Value missing{"", "", 0, false};
    return index < arguments.size() ? arguments[index] : missing;
}

std::string edges(const std::vector<Value>& a)
{
    const auto last = [](int edge) {
        return std::to_string(static_cast<int>(static_cast<unsigned>(edge) - 1U));
    };
    return std::to_string(at(a, 1).number) + " " + std::to_string(at(a, 2).number) + " to " +
           last(at(a, 3).number) + " " + last(at(a, 4).number);
}

Lines loginOutcome(const std::vector<Value>& a)
{
    if (a.size() < 6)
        return {"WARN login agruments failed " + std::to_string(a.size())};
    return {"login " + at(a, 0).text + "|" + at(a, 5).text + "|" + at(a, 3).text + "|" +
            at(a, 4).text + "|" + std::to_string(at(a, 2).number)};
}

Lines presenceOutcome(const std::vector<Value>& a)
{
    if (a.empty())
        return {};
    const std::string status = std::to_string(a[0].number);
    if (a[0].number <= 0)
        return {"ERROR Unprocessed swtich status, " + status};
    return {"presence " + status};
}

Lines windowOutcome(const std::vector<Value>& a)
{
    if (a.size() < 2)
        return {};
    const std::string number = std::to_string(a[1].number);
    Lines lines;
    if (!at(a, 2).text.empty())
        lines.push_back("WARN Open LX Session " + a[0].text + ", " + at(a, 2).text + ", " + number);
    lines.push_back("window " + number + " " + at(a, 2).text + " " + a[0].text);
    return lines;
}

Lines groupOutcome(const std::vector<Value>& a)
{
    if (a.size() < 2)
        return {};
    return {"group " + a[1].text + " " + a[0].text};
}

Lines trayOutcome(const std::vector<Value>& a)
{
    if (a.size() < 5)
        return {};
    return {std::string("tray list ") + (a[0].flag ? "show " : "hide ") + edges(a)};
}

Lines requestOutcome(const std::vector<Value>& a)
{
    if (a.empty())
        return {};
    if (a[0].json == R"({"api":"showLXAccusation","url":"u"})")
        return {"request u"};
    return {"ERROR api not implemented "};
}

Lines settingsOutcome(const std::vector<Value>&)
{
    return {"settings"};
}

const std::string kNoSettings = "{}";

Lines changeSettingOutcome(const std::vector<Value>& a)
{
    if (at(a, 0).text != kNoSettings)
        return {};
    return {"hotKeys  0", "shortcuts  0"};
}

Lines changeSkinOutcome(const std::vector<Value>& a)
{
    if (at(a, 0).text != kNoSettings)
        return {};
    return {"ERROR Unprocessed Skin", "ERROR Unprocessed Skin"};
}

const std::vector<Message>& messages()
{
    const auto text = [](const std::string& t) { return Value{"\"" + t + "\"", t, 0, false}; };
    const auto number = [](int n) { return Value{std::to_string(n), "", n, false}; };
    const Value yes{"true", "", 0, true};
    static const std::vector<Message> all = {
        {"Login", {text("pin"), yes, number(3), text("c"), text("d"), text("e")}, loginOutcome},
        {"ChangeStatus", {number(2)}, presenceOutcome},
        {"OpenLXWindow", {text("a"), number(4), text("b")}, windowOutcome},
        {"OpenLXGroup", {text("a"), text("b")}, groupOutcome},
        {"OpenBaseInfoSettingWindow", {}, settingsOutcome},
        {"ShowUnreadMessageList", {yes, number(1), number(2), number(3), number(4)}, trayOutcome},
        {"ChangeSetting", {text(kNoSettings)}, changeSettingOutcome},
        {"ChangeSkin", {text(kNoSettings)}, changeSkinOutcome},
        {"Request",
         {Value{R"({"api":"showLXAccusation","url":"u"})", "", 0, false}},
         requestOutcome}};
    return all;
}

class ArgumentAbuseTest : public LoginFixture
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(startUp());
        channel().enterMainUI(0, recordingObserver());
    }

    /// What the message led to: complaints, then callbacks, then calls of the login service.
    Lines outcomeOf(const std::string& name, const std::string& arguments)
    {
        return outcomeOfText(textOf(name, arguments));
    }

    static void receive(const std::string& name, const std::string& arguments)
    {
        KTChannelManagerProbe::receive(QByteArray::fromStdString(textOf(name, arguments)));
    }

    Lines outcomeOfText(const std::string& text)
    {
        log.clear();
        calls.clear();
        const std::size_t before = service->calls().size();
        KTChannelManagerProbe::receive(QByteArray::fromStdString(text));
        Lines lines = log.complaints();
        lines.insert(lines.end(), calls.begin(), calls.end());
        const auto made = service->calls();
        for (std::size_t i = before; i < made.size(); ++i)
            lines.push_back(describe(made[i]));
        return lines;
    }

    /// As above for a message whose one argument is `document` as a text.
    Lines outcomeOfDocument(const std::string& name, const std::string& document)
    {
        Json::Value arguments;
        arguments.append(document);
        return outcomeOf(name, JSONUtils::stringFromJSON(arguments));
    }

    void expectOutcome(const Message& message, const std::vector<Value>& arguments)
    {
        std::string json = "[";
        for (const Value& value : arguments)
            json += (json.size() > 1 ? "," : "") + value.json;
        json += "]";
        EXPECT_EQ(outcomeOf(message.name, json), message.outcome(arguments))
            << message.name << " " << json.substr(0, 200);
    }

private:
    static std::string textOf(const std::string& name, const std::string& arguments)
    {
        return R"({"name":")" + name + R"(","arguments":)" + arguments + "}";
    }

    static std::string describe(const RecordingLoginService::Call& call)
    {
        if (call.function == "switchPresence")
            return "presence " + std::to_string(call.numbers.at(0));
        return "login " + call.texts.at(0) + "|" + call.texts.at(1) + "|" + call.texts.at(2) + "|" +
               call.texts.at(3) + "|" + std::to_string(call.numbers.at(0));
    }
};

} // namespace

TEST_F(ArgumentAbuseTest, EveryPositionWithEveryValue)
{
    for (const Message& message : messages()) {
        expectOutcome(message, message.good);
        for (std::size_t position = 0; position < message.good.size(); ++position) {
            for (const Value& value : abuse()) {
                auto arguments = message.good;
                arguments[position] = value;
                expectOutcome(message, arguments);
            }
        }
    }
}

TEST_F(ArgumentAbuseTest, EveryPositionLeftOutAndOneTooMany)
{
    for (const Message& message : messages()) {
        for (std::size_t position = 0; position < message.good.size(); ++position) {
            auto arguments = message.good;
            arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(position));
            expectOutcome(message, arguments);
            arguments = message.good;
            arguments.resize(position);
            expectOutcome(message, arguments);
        }
        for (const Value& value : abuse()) {
            auto arguments = message.good;
            arguments.resize(std::max<std::size_t>(arguments.size(), 6), value);
            arguments.push_back(value);
            expectOutcome(message, arguments);
        }
    }
}

TEST_F(ArgumentAbuseTest, ArgumentsThemselvesOfEveryType)
{
    for (const Message& message : messages()) {
        EXPECT_EQ(outcomeOfText(R"({"name":")" + message.name + R"("})"), message.outcome({}));
        for (const Value& value : abuse()) {
            if (value.json.front() == '[')
                continue;
            EXPECT_EQ(outcomeOf(message.name, value.json), message.outcome({}))
                << message.name << " " << value.json.substr(0, 200);
        }
    }
}

TEST_F(ArgumentAbuseTest, AccusationKeysWithEveryValue)
{
    for (const Value& value : abuse()) {
        EXPECT_EQ(outcomeOf("Request", R"([{"url":"u","api":)" + value.json + "}]"),
                  Lines{"ERROR api not implemented " + value.text});
        EXPECT_EQ(outcomeOf("Request", R"([{"api":"showLXAccusation","url":)" + value.json + "}]"),
                  Lines{"request " + value.text});
    }
}

TEST_F(ArgumentAbuseTest, SettingsKeysWithEveryValue)
{
    for (const Value& value : abuse()) {
        const auto settings = [&](const std::string& before, const std::string& after) {
            return outcomeOfDocument("ChangeSetting", before + value.json + after);
        };
        settings(R"({"proxy":{"proxytype":)", "}}");
        EXPECT_EQ(core.proxy()->type, value.number);
        settings(R"({"proxy":{"proxyaddr":)", "}}");
        EXPECT_EQ(core.proxy()->address, value.text);
        settings(R"({"proxy":{"proxyport":)", "}}");
        EXPECT_EQ(core.proxy()->port, value.number);
        settings(R"({"proxy":{"proxyuser":)", "}}");
        EXPECT_EQ(core.proxy()->user, value.text);
        settings(R"({"proxy":{"proxypass":)", "}}");
        EXPECT_EQ(core.proxy()->password, value.text);

        const Lines noSkin{"ERROR Unprocessed Skin" + value.text, "ERROR Unprocessed Skin"};
        EXPECT_EQ(outcomeOfDocument("ChangeSkin", R"({"skinName":)" + value.json + "}"), noSkin);
        Lines noSkinNoKeys = noSkin;
        noSkinNoKeys.insert(noSkinNoKeys.end(), {"hotKeys  0", "shortcuts  0"});
        EXPECT_EQ(settings(R"({"skinName":)", "}"), noSkinNoKeys);

        settings(R"({"merge":)", "}");
        EXPECT_TRUE(
            log.has(log4cplus::DEBUG_LOG_LEVEL, value.flag ? "change merge, 1" : "change merge, 0"))
            << value.json;
    }
}

TEST_F(ArgumentAbuseTest, KeyDefinitionsWithEveryValue)
{
    KTKeyInfo info;
    auto* observer = recordingObserver();
    observer->onHotKeyChanged = [&](const std::vector<KTKeyInfo>& keys) { info = keys.at(0); };
    channel().enterMainUI(0, observer);
    for (const Value& value : abuse()) {
        const auto define = [&](const std::string& key) {
            outcomeOfDocument("ChangeSetting",
                              R"({"hotKey":[{")" + key + "\":" + value.json + "}]}");
        };
        Json::Value document;
        ASSERT_TRUE(JSONUtils::parseJSON("[" + value.json + "]", document));
        const unsigned number = JSONUtils::optUInt(0, document);
        define("valid");
        EXPECT_EQ(info.valid, value.flag) << value.json;
        define("functionName");
        EXPECT_EQ(info.functionName, value.text);
        define("keyCode");
        EXPECT_EQ(info.key, QHotkey::nativeKey2QT(number)) << value.json;
        define("modifiers");
        EXPECT_EQ(info.modifiers, QHotkey::nativeModifier2QT(number)) << value.json;
    }
}

TEST_F(ArgumentAbuseTest, EveryPositionWithEveryValueBeforeTheMainWindow)
{
    // Whatever came before, the last conversation and the last group are parked and replayed.
    channel().enterMainUI(0, nullptr);
    ASSERT_TRUE(channel().startUp(QStringLiteral("pipe?param=nowhere&nowhere"), nullptr, nullptr));
    for (const Message& message : messages()) {
        for (std::size_t position = 0; position < message.good.size(); ++position) {
            for (const Value& value : abuse()) {
                std::string json;
                for (std::size_t i = 0; i < message.good.size(); ++i)
                    json += (i > 0 ? "," : "[") + (i == position ? value : message.good[i]).json;
                receive(message.name, json + "]");
            }
        }
    }
    receive("OpenLXWindow", R"(["last",1])");
    receive("OpenLXGroup", R"(["last","text"])");
    calls.clear();
    channel().enterMainUI(0, recordingObserver());
    EXPECT_EQ(calls, (Lines{"window 1  last", "group text last"}));
}
