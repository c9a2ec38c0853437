#include "ipc/MultiAccount/MAManager.h"
#include "pavo_base/JSONUtils.h"
#include "pavo_core/PAVOCore.h"
#include "tests/support/ChannelFixture.h"

#include <json/value.h>

using log4cplus::DEBUG_LOG_LEVEL;

namespace {

using Lines = std::vector<std::string>;

class SettingsTest : public ChannelFixture
{
protected:
    SettingsTest()
    {
        QCoreApplication::setApplicationName(
            QStringLiteral("pavo-test-%1").arg(QCoreApplication::applicationPid()));
        PAVOCore::setShareInstance(&core);
    }
    ~SettingsTest() override { PAVOCore::setShareInstance(nullptr); }

    void SetUp() override { ASSERT_TRUE(startUp()); }

    /// A message whose one argument is `document` as a text.
    static void receive(const std::string& name, const std::string& document)
    {
        Json::Value message;
        JSONUtils::put("name", name, message);
        message["arguments"].append(document);
        KTChannelManagerProbe::receive(
            QByteArray::fromStdString(JSONUtils::stringFromJSON(message)));
    }
    static void set(const std::string& document) { receive("ChangeSetting", document); }

    void enter() { channel().enterMainUI(0, recordingObserver()); }

    /// What the settings have logged, and nothing of the traffic.
    Lines records() const
    {
        Lines lines;
        for (const LogRecord& record : log.records()) {
            if (record.file == "KTChannelManager_settings.cpp" ||
                record.file == "MultiAccount/MAManager_switching.cpp") {
                EXPECT_TRUE(record.level == DEBUG_LOG_LEVEL ||
                            record.level == log4cplus::ERROR_LOG_LEVEL);
                lines.push_back((record.level == DEBUG_LOG_LEVEL ? "DEBUG " : "ERROR ") +
                                record.text);
            }
        }
        return lines;
    }

    PAVOCore core;
};

/// Says when it is given a proxy.
class TellingCore final : public PAVOCore
{
public:
    explicit TellingCore(Lines& calls)
        : m_calls(calls)
    {
    }
    void configProxy(int type, const std::string& address, int port, const std::string& user,
                     const std::string& password) override
    {
        PAVOCore::configProxy(type, address, port, user, password);
        m_calls.push_back("proxy");
    }

private:
    Lines& m_calls;
};

const Lines kNoKeys{"hotKeys  0", "shortcuts  0"};

Lines withoutKeys(Lines calls)
{
    calls.insert(calls.end(), kNoKeys.begin(), kNoKeys.end());
    return calls;
}

} // namespace

TEST_F(SettingsTest, WhatIsNoTextWithAnObjectLeavesNoMoreThanItsRecord)
{
    enter();
    for (const char* arguments : {R"({"a":1})", "[]", "null", R"("{}")"}) {
        log.clear();
        KTChannelManagerProbe::receive(QByteArray(R"({"name":"ChangeSetting","arguments":)") +
                                       arguments + "}");
        EXPECT_EQ(records(), Lines{"DEBUG hbx change setting"}) << arguments;
        log.clear();
        KTChannelManagerProbe::receive(QByteArray(R"({"name":"ChangeSkin","arguments":)") +
                                       arguments + "}");
        EXPECT_EQ(records(), Lines{}) << arguments;
    }
    for (const std::string document :
         {"", "abc", "{", "[]", R"(["skinName"])", "null", "1", R"("{}")", R"({"merge":true} x)"}) {
        log.clear();
        set(document);
        EXPECT_EQ(records(),
                  (Lines{"DEBUG hbx change setting", "DEBUG hbx change setting, " + document}));
        log.clear();
        receive("ChangeSkin", document);
        EXPECT_EQ(records(), Lines{"DEBUG kt change skin, " + document});
    }
    EXPECT_TRUE(calls.empty());
    EXPECT_FALSE(core.proxy());
}

TEST_F(SettingsTest, EverySettingInItsOrder)
{
    TellingCore telling(calls);
    PAVOCore::setShareInstance(&telling);
    auto* observer = recordingObserver();
    observer->onShortcutChanged = [this](const std::vector<KTKeyInfo>& keys) {
        calls.push_back("shortcuts " + keys.at(0).functionName);
        EXPECT_EQ(log.countBeginning("change merge, "), 0);
    };
    channel().enterMainUI(0, observer);
    log.clear();
    const std::string document =
        R"({"merge":false,"shortcut":[{"valid":true,"modifiers":2,"keyCode":65,"functionName":"send"}],)"
        R"("hotKey":[],"skinName":"violet","proxy":{"proxytype":1,"proxyaddr":"10.0.0.1",)"
        R"("proxyport":3128,"proxyuser":"u","proxypass":"p"}})";
    set(document);
    EXPECT_EQ(records(), (Lines{"DEBUG hbx change setting", "DEBUG hbx change setting, " + document,
                                "DEBUG change skin purple", "DEBUG parse key send, 65, 67108864",
                                "DEBUG change merge, 0"}));
    EXPECT_EQ(calls, (Lines{"proxy", "skin 5", "hotKeys  0", "shortcuts send"}));
    ASSERT_TRUE(telling.proxy());
    EXPECT_EQ(telling.proxy()->type, 1);
    EXPECT_EQ(telling.proxy()->address, "10.0.0.1");
    EXPECT_EQ(telling.proxy()->port, 3128);
    EXPECT_EQ(telling.proxy()->user, "u");
    EXPECT_EQ(telling.proxy()->password, "p");
}

TEST_F(SettingsTest, ProxyIsSetWhenItIsThereWhateverItIs)
{
    enter();
    set("{}");
    EXPECT_FALSE(core.proxy());
    for (const char* proxy : {"{}", "null", "[]", "1", R"("proxytype")",
                              R"({"proxytype":"1","proxyaddr":2,"proxyport":"80"})"}) {
        core.configProxy(1, "a", 2, "u", "p");
        set(R"({"proxy":)" + std::string(proxy) + "}");
        EXPECT_EQ(core.proxy()->type, 0) << proxy;
        EXPECT_EQ(core.proxy()->address, "") << proxy;
        EXPECT_EQ(core.proxy()->port, 0) << proxy;
        EXPECT_EQ(core.proxy()->user, "") << proxy;
        EXPECT_EQ(core.proxy()->password, "") << proxy;
    }
    PAVOCore::setShareInstance(nullptr);
    calls.clear();
    set(R"({"proxy":{},"skinName":"red"})");
    EXPECT_EQ(calls, withoutKeys({"skin 3"})) << "the rest is carried out without a core";
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(SettingsTest, PasswordIsLoggedWithTheWholeTextAlone)
{
    enter();
    set(R"({"proxy":{"proxypass":"hunter2"},"skinName":"red","hotKey":[{}],"merge":true})");
    int lines = 0;
    for (const LogRecord& record : log.records()) {
        if (record.text.find("hunter2") == std::string::npos)
            continue;
        ++lines;
        EXPECT_EQ(record.level, DEBUG_LOG_LEVEL);
        EXPECT_TRUE(record.text.rfind("recevie hbx message {", 0) == 0 ||
                    record.text.rfind("hbx change setting, {", 0) == 0)
            << record.text;
    }
    EXPECT_EQ(lines, 2);
    EXPECT_EQ(core.proxy()->password, "hunter2");
}

TEST_F(SettingsTest, HostsSkinNamesAreTranslatedAndApplied)
{
    struct Row
    {
        const char* hostName;
        const char* name;
        int index;
    };
    constexpr Row kRows[] = {
        {"lakeblue", "geekblue", 4}, {"blue", "blue", 0},     {"orange", "orange", 1},
        {"emerald", "green", 2},     {"green", "green", 2},   {"garnet", "red", 3},
        {"red", "red", 3},           {"violet", "purple", 5}, {"purple", "purple", 5}};
    enter();
    for (const Row& row : kRows) {
        const std::string document = R"({"skinName":")" + std::string(row.hostName) + R"("})";
        const std::string call = "skin " + std::to_string(row.index);
        log.clear();
        calls.clear();
        set(document);
        EXPECT_EQ(calls, withoutKeys({call})) << row.hostName;
        EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, std::string("change skin ") + row.name));
        calls.clear();
        receive("ChangeSkin", document);
        EXPECT_EQ(calls, Lines{call}) << row.hostName;
        EXPECT_TRUE(log.complaints().empty());
    }
}

TEST_F(SettingsTest, UnknownSkinIsReportedByTranslationAndApplication)
{
    enter();
    for (const std::string name : {"geekblue", "Blue", " blue", "", "\xE7\xBA\xA2"}) {
        const std::string document = R"({"skinName":")" + name + R"("})";
        const Lines expected{"ERROR Unprocessed Skin" + name, "ERROR Unprocessed Skin"};
        log.clear();
        set(document);
        EXPECT_EQ(log.complaints(), expected);
        log.clear();
        receive("ChangeSkin", document);
        EXPECT_EQ(log.complaints(), expected);
    }
    log.clear();
    receive("ChangeSkin", "{}");
    EXPECT_EQ(log.complaints(), (Lines{"ERROR Unprocessed Skin", "ERROR Unprocessed Skin"}));
    EXPECT_EQ(calls, withoutKeys(withoutKeys(withoutKeys(withoutKeys(kNoKeys)))));
}

TEST_F(SettingsTest, SkinThatNobodyTakesIsReported)
{
    channel().enterMainUI(0, new KTChannelObserver);
    for (const char* message : {"ChangeSetting", "ChangeSkin"}) {
        log.clear();
        receive(message, R"({"skinName":"lakeblue"})");
        EXPECT_EQ(log.complaints(), Lines{"ERROR Unprocessed Skingeekblue"});
        EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "change skin geekblue"));
    }
}

TEST_F(SettingsTest, SkinOfTheSettingsIsParkedAndReplayed)
{
    set(R"({"skinName":"lakeblue"})");
    EXPECT_EQ(KTChannelManagerProbe::context()->skinName, "geekblue");
    set("{}");
    EXPECT_EQ(KTChannelManagerProbe::context()->skinName, "geekblue");
    EXPECT_TRUE(log.complaints().empty());
    enter();
    EXPECT_EQ(calls, Lines{"skin 4"});
}

TEST_F(SettingsTest, UnknownSkinOfTheSettingsTakesTheParkedOneAway)
{
    set(R"({"skinName":"red"})");
    set(R"({"skinName":"geekblue"})");
    EXPECT_EQ(log.complaints(), Lines{"ERROR Unprocessed Skingeekblue"});
    enter();
    EXPECT_EQ(calls, Lines{});
}

TEST_F(SettingsTest, SkinThatComesAloneIsNotParked)
{
    receive("ChangeSkin", R"({"skinName":"lakeblue"})");
    EXPECT_EQ(KTChannelManagerProbe::context()->skinName, "");
    EXPECT_EQ(log.complaints(), Lines{"ERROR Unprocessed Skingeekblue"});
    enter();
    EXPECT_EQ(calls, Lines{});
}

TEST_F(SettingsTest, KeysAreTranslatedAndHandedOnInOrder)
{
    std::vector<KTKeyInfo> hotKeys;
    std::vector<KTKeyInfo> shortcuts;
    auto* observer = new KTChannelObserver;
    observer->onHotKeyChanged = [&](std::vector<KTKeyInfo> keys) { hotKeys = std::move(keys); };
    observer->onShortcutChanged = [&](std::vector<KTKeyInfo> keys) { shortcuts = std::move(keys); };
    channel().enterMainUI(0, observer);
    log.clear();
    set(R"({"hotKey":[{"valid":true,"modifiers":3,"keyCode":112,"functionName":"呼叫"},)"
        R"({"valid":false,"modifiers":12,"keyCode":27,"functionName":"hide"}],)"
        R"("shortcut":[1,null,{"keyCode":-1,"modifiers":4294967296,"valid":1}]})");
    ASSERT_EQ(hotKeys.size(), 2U);
    EXPECT_TRUE(hotKeys[0].valid);
    EXPECT_EQ(hotKeys[0].functionName, "\xE5\x91\xBC\xE5\x8F\xAB");
    EXPECT_EQ(hotKeys[0].key, Qt::Key_F1);
    EXPECT_EQ(hotKeys[0].modifiers, Qt::AltModifier | Qt::ControlModifier);
    EXPECT_FALSE(hotKeys[1].valid);
    EXPECT_EQ(hotKeys[1].functionName, "hide");
    EXPECT_EQ(hotKeys[1].key, Qt::Key_Escape);
    EXPECT_EQ(hotKeys[1].modifiers, Qt::ShiftModifier | Qt::MetaModifier);
    ASSERT_EQ(shortcuts.size(), 3U) << "no definition is refused";
    for (const KTKeyInfo& info : shortcuts) {
        EXPECT_FALSE(info.valid);
        EXPECT_EQ(info.functionName, "");
        EXPECT_EQ(info.key, Qt::Key_unknown);
        EXPECT_EQ(info.modifiers, Qt::NoModifier);
    }
    EXPECT_TRUE(
        log.has(DEBUG_LOG_LEVEL, "parse key \xE5\x91\xBC\xE5\x8F\xAB, 16777264, 201326592"));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "parse key hide, 16777216, 301989888"));
    EXPECT_EQ(log.count(DEBUG_LOG_LEVEL, "parse key , 33554431, 0"), 3);
}

TEST_F(SettingsTest, KeysAreParsedWhereThereIsAList)
{
    std::vector<KTKeyInfo> keys(1);
    for (const char* text : {"null", "{}", "1", R"("[]")"}) {
        Json::Value list;
        ASSERT_TRUE(JSONUtils::parseJSON(text, list));
        EXPECT_FALSE(KTChannelManagerProbe::parseKeyInfos(list, keys)) << text;
    }
    Json::Value list(Json::arrayValue);
    EXPECT_TRUE(KTChannelManagerProbe::parseKeyInfos(list, keys));
    EXPECT_EQ(keys.size(), 1U);
    list.append("anything");
    EXPECT_TRUE(KTChannelManagerProbe::parseKeyInfos(list, keys));
    EXPECT_EQ(keys.size(), 2U) << "what was there stays";
}

TEST_F(SettingsTest, KeysThatAreMissingOrNoListClearThem)
{
    const std::string keys = R"({"hotKey":[{"functionName":"h"}],"shortcut":[{},{}]})";
    for (const char* document :
         {"{}", R"({"hotKey":1,"shortcut":{"0":{}}})", R"({"hotKey":null,"shortcut":"[]"})",
          R"({"hotKey":[],"shortcut":[]})"}) {
        set(keys);
        EXPECT_EQ(KTChannelManagerProbe::context()->hotKeys.size(), 1U);
        EXPECT_EQ(KTChannelManagerProbe::context()->shortcuts.size(), 2U);
        set(document);
        EXPECT_TRUE(KTChannelManagerProbe::context()->hotKeys.empty()) << document;
        EXPECT_TRUE(KTChannelManagerProbe::context()->shortcuts.empty()) << document;
    }
    set(keys);
    enter();
    EXPECT_EQ(calls, (Lines{"shortcuts  2", "hotKeys h 1"}));
    calls.clear();
    set(keys);
    set("{}");
    EXPECT_EQ(calls, (Lines{"hotKeys h 1", "shortcuts  2", "hotKeys  0", "shortcuts  0"}));
}

TEST_F(SettingsTest, KeysThatNobodyTakesAreDropped)
{
    channel().enterMainUI(0, new KTChannelObserver);
    log.clear();
    set(R"({"hotKey":[{}],"shortcut":[{}]})");
    EXPECT_TRUE(log.complaints().empty());
    enter();
    EXPECT_TRUE(calls.empty());
}

TEST_F(SettingsTest, ObserverWithoutKeyCallbacksLeavesKeysInTheContextThatIsStillThere)
{
    channel().enterMainUI(0, new KTChannelObserver);
    ASSERT_TRUE(channel().startUp(QStringLiteral("pipe?param=nowhere&nowhere"), nullptr, nullptr));
    set(R"({"hotKey":[{"functionName":"h"}],"shortcut":[{"functionName":"s"}]})");
    enter();
    EXPECT_EQ(calls, (Lines{"shortcuts s 1", "hotKeys h 1"}));
}

TEST_F(SettingsTest, MergeModeReachesTheAccountsWithoutTellingTheOwnWindow)
{
    const auto accounts = MAManager::Instance();
    auto* observer = new MAObserver;
    int told = 0;
    observer->messageCallback = [&](int, MASelectedAccount&, std::list<MAAccountInfo>&) { ++told; };
    accounts->addObserver(observer);
    ASSERT_TRUE(accounts->initManager("app", "pin", "class", "title", 0));
    const auto mode = [&] {
        MASelectedAccount selected;
        EXPECT_TRUE(accounts->selectedAccount(selected));
        return selected.mode;
    };
    struct Row
    {
        const char* document;
        int mode;
    };
    for (const Row& row : {Row{R"({"merge":false})", 0}, Row{"{}", 0}, Row{R"({"merge":true})", 1},
                           Row{"{}", 1}, Row{R"({"merge":1})", 0}, Row{R"({"merge":true})", 1},
                           Row{R"({"merge":null})", 0}, Row{R"({"merge":"true"})", 0}}) {
        log.clear();
        set(row.document);
        EXPECT_EQ(mode(), row.mode) << row.document;
        EXPECT_EQ(log.count(DEBUG_LOG_LEVEL, "change merge, " + std::to_string(row.mode)),
                  row.document == std::string("{}") ? 0 : 1);
    }
    EXPECT_EQ(told, 0);
    EXPECT_EQ(accounts->quitCurrentAccount(), 1);
    accounts->removeObserver();
}

TEST_F(SettingsTest, CallbackMayEndTheMainWindowInTheMiddle)
{
    auto* observer = recordingObserver();
    const auto witness = std::make_shared<std::string>("skin, then gone");
    observer->onSkinChanged = [this, witness](int) {
        channel().enterMainUI(0, nullptr);
        calls.push_back(*witness);
    };
    channel().enterMainUI(0, observer);
    set(R"({"skinName":"red","hotKey":[{}],"merge":true})");
    EXPECT_EQ(calls, Lines{"skin, then gone"});
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "change merge, 1")) << "the rest is still carried out";
    EXPECT_EQ(witness.use_count(), 1);
}
