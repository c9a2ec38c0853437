#include "tests/support/ChannelFixture.h"

#include <atomic>
#include <set>

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;

// Every test runs in a process of its own: there is one manager in a process.

namespace {

using KTChannelManagerTest = ChannelFixture;

const QByteArray kOpenSettings = R"({"name":"OpenBaseInfoSettingWindow"})";

} // namespace

TEST_F(KTChannelManagerTest, ThereIsOneInstance)
{
    EXPECT_EQ(KTChannelManager::sharedInstance(), &channel());
    EXPECT_FALSE(channel().isSupported());
}

TEST_F(KTChannelManagerTest, FirstUsedOnAnotherThreadItLivesOnTheGuiThread)
{
    KTChannelManager* instance = nullptr;
    std::thread([&] { instance = KTChannelManager::sharedInstance(); }).join();
    EXPECT_EQ(instance->thread(), QCoreApplication::instance()->thread());
    EXPECT_EQ(instance, KTChannelManager::sharedInstance());
}

TEST_F(KTChannelManagerTest, ManyThreadsGetOneInstance)
{
    constexpr int kThreads = 16;
    std::vector<std::thread> threads;
    Collector<KTChannelManager*> instances;
    std::atomic<int> ready{0};
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            ++ready;
            while (ready < kThreads)
                std::this_thread::yield();
            instances.add(KTChannelManager::sharedInstance());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (KTChannelManager* instance : instances.values())
        EXPECT_EQ(instance, KTChannelManager::sharedInstance());
}

TEST_F(KTChannelManagerTest, StartUpReadsFromTheFirstNamedPipeAndWritesToTheSecond)
{
    ASSERT_TRUE(startUp());
    EXPECT_TRUE(channel().isSupported());
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "parse cmd line " + commandLine().toStdString()));
    channel().enterMainUI(3, nullptr);
    ASSERT_TRUE(fromWorkbench.messages().waitForCount(1));
    hostSends(R"({"name":"Hello"})");
    EXPECT_TRUE(log.waitFor(WARN_LOG_LEVEL, "Unprocessed Hello"));
}

TEST_F(KTChannelManagerTest, CommandLinesWithoutTwoNamesAreRefused)
{
    struct Row
    {
        const char* line;
        bool malformed;
    };
    for (const Row& row : {Row{"", true},
                           {"workbench.exe", true},
                           {"pipe?param=in", true},
                           {"in&out", true},
                           {"PIPE?PARAM=in&out", true},
                           {"pipe?param=&out", false},
                           {"pipe?param=in&", false},
                           {"pipe?param=&", false}}) {
        log.clear();
        bool called = false;
        EXPECT_FALSE(channel().startUp(
            QString::fromUtf8(row.line),
            [&](int, const std::string&, const QString&) { called = true; }, nullptr))
            << row.line;
        EXPECT_FALSE(channel().isSupported());
        std::vector<std::string> expected;
        if (row.malformed)
            expected.push_back(std::string("ERROR command line format error, ") + row.line);
        expected.push_back(std::string("ERROR invalid pipeline name, ") + row.line);
        EXPECT_EQ(log.complaints(), expected) << row.line;
        EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, std::string("parse cmd line ") + row.line));
        EXPECT_FALSE(called);
        EXPECT_FALSE(KTChannelManagerProbe::context());
    }
    channel().enterMainUI(0, nullptr);
}

TEST_F(KTChannelManagerTest, SeparatorInFrontOfTheKeyTakesTheRestOfTheLineAsReader)
{
    pavo::HostPipe odd(uniquePipeName() + QStringLiteral("&tail"),
                       pavo::HostPipe::Direction::HostWrites);
    const QString line = QStringLiteral("&b pipe?param=") + odd.fullName();
    ASSERT_TRUE(channel().startUp(line, nullptr, nullptr));
    ASSERT_TRUE(odd.awaitClient());
    ASSERT_TRUE(log.waitFor(DEBUG_LOG_LEVEL, "init reader " + odd.fullName().toStdString()));
    EXPECT_TRUE(log.waitFor(DEBUG_LOG_LEVEL, "init writer " + line.mid(1).toStdString()));
}

TEST_F(KTChannelManagerTest, MessagesAreLoggedByWhetherTheMainWindowExists)
{
    ASSERT_TRUE(startUp());
    hostSends(R"({"name":"First"})");
    ASSERT_TRUE(log.waitFor(WARN_LOG_LEVEL, "Unprocessed First"));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL,
                        R"(not initialized completed, recevie hbx message {"name":"First"})"));
    channel().enterMainUI(0, new KTChannelObserver);
    hostSends(R"({"name":"Second"})");
    ASSERT_TRUE(log.waitFor(WARN_LOG_LEVEL, "Unprocessed Second"));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, R"(recevie hbx message {"name":"Second"})"));
}

TEST_F(KTChannelManagerTest, BadTextsAreLoggedAndNothingElse)
{
    ASSERT_TRUE(startUp());
    channel().enterMainUI(0, recordingObserver());
    log.clear();
    std::vector<std::string> expected;
    const auto send = [&](const QByteArray& text, const std::string& complaint) {
        hostSends(text);
        expected.push_back("WARN " + complaint);
    };
    send("", "read data is empty ");
    for (const QByteArray& text :
         {QByteArray("abc"), QByteArray("{"), QByteArray(4000, '['), QByteArray("{} {}")})
        send(text, "parse message failed " + text.toStdString());
    for (const char* text : {"{}", "[]", "null", "1", "\"x\"", R"({"name":{}})"})
        send(text, "Unprocessed ");
    ASSERT_TRUE(waitUntil([&] { return log.complaints().size() >= expected.size(); }));
    EXPECT_EQ(log.complaints(), expected);
    EXPECT_TRUE(calls.empty());
}

TEST_F(KTChannelManagerTest, TextsWhileNotStartedAreIgnored)
{
    for (const char* text : {"", "abc", R"({"name":"OpenBaseInfoSettingWindow"})"}) {
        log.clear();
        KTChannelManagerProbe::receive(text);
        EXPECT_EQ(log.lines(),
                  std::vector<std::string>{std::string("WARN read data is empty ") + text});
    }
}

TEST_F(KTChannelManagerTest, NamesAreComparedExactly)
{
    ASSERT_TRUE(startUp());
    for (const char* name : {"login", "LOGIN", "Login ", "openBaseInfoSettingWindow",
                             "OpenBaseInfoSettingWindow2", "OpenBaseInfoSetting"}) {
        hostSends(QByteArray(R"({"name":")") + name + R"("})");
        EXPECT_TRUE(log.waitFor(WARN_LOG_LEVEL, std::string("Unprocessed ") + name));
    }
}

TEST_F(KTChannelManagerTest, BaseInfoSettingCallsTheObserverOrNobody)
{
    ASSERT_TRUE(startUp());
    hostSends(kOpenSettings);
    drain();
    auto* observer = new KTChannelObserver;
    channel().enterMainUI(0, observer);
    hostSends(kOpenSettings);
    drain();
    int settings = 0;
    observer->onOpenBaseInfoSetting = [&] { ++settings; };
    hostSends(kOpenSettings);
    hostSends(R"({"name":"OpenBaseInfoSettingWindow","arguments":[1,{}]})");
    drain();
    EXPECT_EQ(settings, 2);
    EXPECT_EQ(log.complaints(), std::vector<std::string>(3, "WARN Unprocessed drained"));
}

TEST_F(KTChannelManagerTest, NothingIsSentBeforeStartUp)
{
    channel().enterMainUI(1, nullptr);
    ASSERT_TRUE(startUp());
    channel().enterMainUI(2, nullptr);
    ASSERT_TRUE(fromWorkbench.messages().waitForCount(1));
    EXPECT_TRUE(fromWorkbench.messages().values().front().contains("[2,\"\"]"));
    EXPECT_EQ(fromWorkbench.messages().count(), 1U);
}

TEST_F(KTChannelManagerTest, HostThatGoesBeforeTheMainWindowIsReportedToStartUp)
{
    std::vector<std::string> reports;
    ASSERT_TRUE(startUp([&](int code, const std::string& pin, const QString& skin) {
        reports.push_back(std::to_string(code) + "|" + pin + "|" + skin.toStdString());
    }));
    toWorkbench.close();
    ASSERT_TRUE(waitUntil([&] { return !reports.empty(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(reports, std::vector<std::string>{"-1||"});
    EXPECT_TRUE(fromWorkbench.waitForEnd()) << "the writer is closed as well";
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR read data error 109"});
    EXPECT_TRUE(channel().isSupported());
    channel().enterMainUI(0, recordingObserver());
    EXPECT_EQ(fromWorkbench.messages().count(), 0U);
    EXPECT_EQ(log.complaints().size(), 1U);
}

TEST_F(KTChannelManagerTest, HostThatGoesAfterTheMainWindowIsReportedToTheObserver)
{
    bool startUpCalled = false;
    ASSERT_TRUE(startUp([&](int, const std::string&, const QString&) { startUpCalled = true; }));
    channel().enterMainUI(0, recordingObserver());
    toWorkbench.close();
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); }));
    EXPECT_EQ(calls, std::vector<std::string>{"closed"});
    EXPECT_FALSE(startUpCalled);
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR read data error 109"});
}

TEST_F(KTChannelManagerTest, HostThatGoesWithNobodyToTellIsLogged)
{
    ASSERT_TRUE(startUp());
    channel().enterMainUI(0, new KTChannelObserver);
    toWorkbench.close();
    ASSERT_TRUE(log.waitFor(ERROR_LOG_LEVEL, "unprocessed pipe close"));
    EXPECT_EQ(log.complaints(), (std::vector<std::string>{"ERROR read data error 109",
                                                          "ERROR unprocessed pipe close"}));
}

TEST_F(KTChannelManagerTest, ContextWithoutCallbackLeavesTheCloseToTheObserver)
{
    channel().enterMainUI(0, recordingObserver());
    ASSERT_TRUE(channel().startUp(commandLine(), nullptr, nullptr));
    ASSERT_TRUE(toWorkbench.awaitClient());
    toWorkbench.close();
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); }));
    EXPECT_EQ(calls, std::vector<std::string>{"closed"});
}

TEST_F(KTChannelManagerTest, ContextWithoutCallbackAndWithoutObserverLeavesTheCloseToTheLog)
{
    ASSERT_TRUE(channel().startUp(commandLine(), nullptr, nullptr));
    ASSERT_TRUE(toWorkbench.awaitClient());
    toWorkbench.close();
    ASSERT_TRUE(log.waitFor(ERROR_LOG_LEVEL, "unprocessed pipe close"));
}

TEST_F(KTChannelManagerTest, StartUpCallbackMayEnterTheMainWindow)
{
    int code = 0;
    ASSERT_TRUE(startUp([&](int reported, const std::string&, const QString&) {
        channel().enterMainUI(5, recordingObserver());
        code = reported; // Still here though the context that held the callback has gone.
    }));
    toWorkbench.close();
    ASSERT_TRUE(waitUntil([&] { return code == -1; }));
    QCoreApplication::processEvents();
    EXPECT_TRUE(calls.empty()) << "the close is reported once";
    EXPECT_FALSE(KTChannelManagerProbe::context());
}

TEST_F(KTChannelManagerTest, ObserverMayReplaceItselfAndRunAnEventLoopWhileItIsCalled)
{
    ASSERT_TRUE(startUp());
    auto* first = new KTChannelObserver;
    auto witness = std::make_shared<int>(1);
    first->onOpenBaseInfoSetting = [this, witness] {
        channel().enterMainUI(0, recordingObserver());
        hostSends(R"({"name":"Nested"})");
        EXPECT_TRUE(log.waitFor(WARN_LOG_LEVEL, "Unprocessed Nested"));
        calls.push_back("first " + std::to_string(*witness));
    };
    channel().enterMainUI(0, first);
    hostSends(kOpenSettings);
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); }));
    EXPECT_EQ(calls, std::vector<std::string>{"first 1"});
    EXPECT_EQ(witness.use_count(), 1);
}

TEST_F(KTChannelManagerTest, WriterThatCannotBeOpenedIsOnlyLogged)
{
    bool called = false;
    ASSERT_TRUE(channel().startUp(
        QStringLiteral("pipe?param=") + toWorkbench.fullName() + QStringLiteral("&\\\\.\\pipe\\") +
            uniquePipeName(),
        [&](int, const std::string&, const QString&) { called = true; }, nullptr));
    ASSERT_TRUE(toWorkbench.awaitClient());
    ASSERT_TRUE(log.waitFor(ERROR_LOG_LEVEL, "Could not open pipe. GLE=2"));
    channel().enterMainUI(0, recordingObserver());
    hostSends(kOpenSettings);
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); })) << "the reader works all the same";
    EXPECT_EQ(calls, std::vector<std::string>{"settings"});
    EXPECT_FALSE(called);
}

TEST_F(KTChannelManagerTest, RecordsNameTheMemberFunctionAndTheFileBelowTheLibrary)
{
    ASSERT_TRUE(startUp());
    channel().enterMainUI(0, recordingObserver());
    hostSends("abc");
    hostSends(R"({"name":"Login"})");
    hostSends(R"({"name":"ChangeSkin","arguments":["{}"]})");
    hostSends(R"({"name":"Request","arguments":[1]})");
    ASSERT_TRUE(log.waitFor(ERROR_LOG_LEVEL, "api not implemented "));
    toWorkbench.close();
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); }));
    std::set<std::string> files;
    for (const LogRecord& record : log.records())
        files.insert(record.file);
    EXPECT_EQ(files,
              (std::set<std::string>{"KTChannelManager.cpp", "KTChannelManager_conversations.cpp",
                                     "KTChannelManager_login.cpp", "KTChannelManager_settings.cpp",
                                     "pipe/NamedPipe_win.cpp"}));
    for (const LogRecord& record : log.records()) {
        const bool pipe = record.file == "pipe/NamedPipe_win.cpp";
        EXPECT_TRUE(pipe || record.file.rfind("KTChannelManager", 0) == 0) << record.file;
        EXPECT_EQ(record.function.find("lambda"), std::string::npos) << record.function;
        EXPECT_NE(record.function.find(pipe ? "NamedPipe::" : "KTChannelManager::"),
                  std::string::npos)
            << record.function;
        EXPECT_GT(record.line, 0);
    }
}
