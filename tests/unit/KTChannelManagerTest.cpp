#include "tests/support/ChannelFixture.h"
#include "tests/support/Memory.h"

#include "pavo_core/PAVOCore.h"

#include <atomic>
#include <set>

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;

// Every test runs in a process of its own: there is one manager in a process.

namespace {

KTKeyInfo keyInfo(bool valid, const char* functionName, Qt::Key key,
                  Qt::KeyboardModifiers modifiers)
{
    KTKeyInfo info;
    info.valid = valid;
    info.functionName = functionName;
    info.key = key;
    info.modifiers = modifiers;
    return info;
}

class KTChannelManagerTest : public ChannelFixture
{
protected:
    static void parkEverything()
    {
        KTStartUpContext* context = KTChannelManagerProbe::context();
        context->skinName = "red";
        context->shortcuts = {keyInfo(true, "s", Qt::Key_A, Qt::ShiftModifier)};
        context->hotKeys = {keyInfo(false, "h", Qt::Key_B, Qt::AltModifier)};
        context->windowType = 9;
        context->windowText1 = "w1";
        context->windowText2 = "w2";
        context->groupText1 = "g1";
        context->groupText2 = "g2";
    }
};

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
    const QString line = QStringLiteral("a&b pipe?param=") + odd.fullName();
    ASSERT_TRUE(channel().startUp(line, nullptr, nullptr));
    ASSERT_TRUE(odd.awaitClient());
    ASSERT_TRUE(log.waitFor(DEBUG_LOG_LEVEL, "init reader " + odd.fullName().toStdString()));
    EXPECT_TRUE(log.waitFor(DEBUG_LOG_LEVEL, "init writer " + line.mid(2).toStdString()));
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

TEST_F(KTChannelManagerTest, EnterMainUISendsStartupCompletedWithTheClientVersion)
{
    PAVOCore core;
    core.getCoreConfig().clientVersion = "9.12.03\xE4\xBD\xA0";
    PAVOCore::setShareInstance(&core);
    ASSERT_TRUE(startUp());
    channel().enterMainUI(4294967295U, nullptr);
    PAVOCore::setShareInstance(nullptr);
    channel().enterMainUI(7, nullptr);
    ASSERT_TRUE(fromWorkbench.messages().waitForCount(2));
    const auto messages = fromWorkbench.messages().values();
    const QByteArray whole =
        "{\"arguments\":[4294967295,\"9.12.03\xE4\xBD\xA0\"],\"name\":\"StartupCompleted\","
        "\"sequence\":0,\"source\":\"lx\"}";
    EXPECT_EQ(messages[0], frame(whole).left(4 + whole.size() - 2));
    EXPECT_EQ(messages[1], frame(R"({"arguments":[7,""],"name":"StartupCompleted",)"
                                 R"("sequence":0,"source":"lx"})"));
    EXPECT_EQ(log.count(INFO_LOG_LEVEL, "KTChannelManager::enterMainUI enter"), 2);
    EXPECT_EQ(log.count(INFO_LOG_LEVEL, "KTChannelManager::enterMainUI leave"), 2);
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

TEST_F(KTChannelManagerTest, AnotherObserverReplacesAndTheSameOneStays)
{
    auto alive = std::make_shared<int>(0);
    const auto makeObserver = [&] {
        auto* observer = new KTChannelObserver;
        observer->onOpenBaseInfoSetting = [alive] { ++*alive; };
        return observer;
    };
    auto* first = makeObserver();
    channel().enterMainUI(0, first);
    channel().enterMainUI(0, first);
    EXPECT_EQ(alive.use_count(), 2);
    channel().enterMainUI(0, makeObserver());
    EXPECT_EQ(alive.use_count(), 2) << "the first one is destroyed";
    channel().enterMainUI(0, nullptr);
    EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(KTChannelManagerTest, ObserverThatIsReplacedMayTakeItselfOutOnItsWay)
{
    // What it holds, as a main window, takes the observer out when it is destroyed.
    std::shared_ptr<void> window(nullptr, [](void*) { channel().enterMainUI(0, nullptr); });
    ASSERT_TRUE(startUp());
    auto* first = new KTChannelObserver;
    first->onOpenBaseInfoSetting = [held = std::move(window)] {};
    channel().enterMainUI(0, first);
    channel().enterMainUI(0, recordingObserver());
    KTChannelManagerProbe::receive(kOpenSettings);
    EXPECT_EQ(calls, std::vector<std::string>{"settings"});
}

TEST_F(KTChannelManagerTest, ParkedRequestsAreReplayedOnceAndInOrder)
{
    ASSERT_TRUE(startUp());
    KTStartUpContext* context = KTChannelManagerProbe::context();
    ASSERT_TRUE(context);
    context->skinName = "geekblue";
    context->shortcuts = {keyInfo(true, "s", Qt::Key_A, Qt::ShiftModifier)};
    context->hotKeys = {keyInfo(false, "h", Qt::Key_B, Qt::AltModifier), KTKeyInfo{}};
    context->windowType = 3;
    context->windowText1 = "w1";
    context->windowText2 = "w2";
    context->groupText1 = "g1";
    context->groupText2 = "g2";
    const std::vector<std::string> all{"skin 4", "shortcuts s 1", "hotKeys h 2", "window 3 w1 w2",
                                       "group g1 g2"};
    channel().enterMainUI(0, recordingObserver());
    EXPECT_EQ(calls, all);
    EXPECT_FALSE(KTChannelManagerProbe::context());
    channel().enterMainUI(0, recordingObserver());
    EXPECT_EQ(calls, all) << "nothing is replayed twice";
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "change skin geekblue"));
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(KTChannelManagerTest, NothingParkedIsNothingReplayed)
{
    ASSERT_TRUE(startUp());
    KTStartUpContext* context = KTChannelManagerProbe::context();
    context->windowType = -1;
    context->windowText1 = "w1";
    context->groupText1 = "g1";
    channel().enterMainUI(0, recordingObserver());
    EXPECT_TRUE(calls.empty());
    EXPECT_FALSE(KTChannelManagerProbe::context());
}

TEST_F(KTChannelManagerTest, ParkedRequestsWithoutACallbackGoWithTheContext)
{
    ASSERT_TRUE(startUp());
    KTStartUpContext* context = KTChannelManagerProbe::context();
    context->skinName = "blue";
    context->shortcuts = {KTKeyInfo{}};
    context->hotKeys = {KTKeyInfo{}};
    context->windowType = 3;
    context->groupText2 = "g2";
    channel().enterMainUI(0, new KTChannelObserver);
    EXPECT_FALSE(KTChannelManagerProbe::context());
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(KTChannelManagerTest, ParkedSkinThatIsUnknownIsLogged)
{
    ASSERT_TRUE(startUp());
    KTChannelManagerProbe::context()->skinName = "lakeblue";
    channel().enterMainUI(0, recordingObserver());
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR Unprocessed Skinlakeblue"});
}

TEST_F(KTChannelManagerTest, ReplayGoesOnWithTheObserverThatACallbackHandsOver)
{
    const std::vector<std::string> all{"skin 3", "shortcuts s 1", "hotKeys h 1", "window 9 w1 w2",
                                       "group g1 g2"};
    // Each callback in turn hands over another observer, or none.
    for (std::size_t step = 0; step < all.size(); ++step) {
        for (const bool another : {true, false}) {
            ASSERT_TRUE(
                channel().startUp(QStringLiteral("pipe?param=nowhere&nowhere"), nullptr, nullptr));
            parkEverything();
            calls.clear();
            auto* first = recordingObserver();
            auto witness = std::make_shared<std::string>("handed over");
            const auto handOver = [this, another, witness] {
                channel().enterMainUI(1, another ? recordingObserver() : nullptr);
                calls.push_back(*witness); // What runs is a copy: the observer has gone by now.
            };
            switch (step) {
            case 0:
                first->onSkinChanged = [handOver](int) { handOver(); };
                break;
            case 1:
                first->onShortcutChanged = [handOver](const auto&) { handOver(); };
                break;
            case 2:
                first->onHotKeyChanged = [handOver](const auto&) { handOver(); };
                break;
            case 3:
                first->onOpenLXWindow = [handOver](int, const auto&, const auto&) { handOver(); };
                break;
            default:
                first->onOpenLXGroup = [handOver](const auto&, const auto&) { handOver(); };
                break;
            }
            channel().enterMainUI(0, first);
            auto expected = all;
            expected[step] = "handed over";
            if (!another)
                expected.resize(step + 1);
            EXPECT_EQ(calls, expected) << "step " << step;
            EXPECT_FALSE(KTChannelManagerProbe::context());
            EXPECT_EQ(witness.use_count(), 2) << "of the observer nothing is left";
            channel().enterMainUI(0, nullptr);
        }
    }
}

TEST_F(KTChannelManagerTest, StartUpInTheMiddleOfTheReplayKeepsItsCallbacks)
{
    ASSERT_TRUE(startUp());
    parkEverything();
    std::vector<int> codes;
    auto* observer = recordingObserver();
    pavo::HostPipe secondIn(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
    const HostReader secondOut(uniquePipeName());
    observer->onSkinChanged = [&](int) {
        ASSERT_TRUE(channel().startUp(
            QStringLiteral("pipe?param=") + secondIn.fullName() + QStringLiteral("&") +
                secondOut.fullName(),
            [&](int code, const std::string&, const QString&) { codes.push_back(code); }, nullptr));
    };
    channel().enterMainUI(0, observer);
    EXPECT_EQ(calls, (std::vector<std::string>{"shortcuts s 1", "hotKeys h 1", "window 9 w1 w2",
                                               "group g1 g2"}));
    ASSERT_TRUE(KTChannelManagerProbe::context());
    ASSERT_TRUE(secondIn.awaitClient());
    secondIn.close();
    ASSERT_TRUE(waitUntil([&] { return !codes.empty(); }));
    EXPECT_EQ(codes, std::vector<int>{-1});
}

TEST_F(KTChannelManagerTest, EventLoopInTheMiddleOfTheReplayServesTheHost)
{
    ASSERT_TRUE(startUp());
    parkEverything();
    auto* observer = recordingObserver();
    observer->onShortcutChanged = [this](const auto&) {
        hostSends(kOpenSettings);
        EXPECT_TRUE(waitUntil([this] { return calls.back() == "settings"; }));
        EXPECT_TRUE(KTChannelManagerProbe::context()) << "until its replay is over";
    };
    channel().enterMainUI(0, observer);
    EXPECT_EQ(calls, (std::vector<std::string>{"skin 3", "settings", "hotKeys h 1",
                                               "window 9 w1 w2", "group g1 g2"}));
}

TEST_F(KTChannelManagerTest, ChannelMayBeStartedAnewWhenThePipeHasClosed)
{
    ASSERT_TRUE(startUp());
    auto* observer = recordingObserver();
    pavo::HostPipe secondIn(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
    const HostReader secondOut(uniquePipeName());
    bool again = false;
    observer->onPipeClosed = [&] {
        again = channel().startUp(QStringLiteral("pipe?param=") + secondIn.fullName() +
                                      QStringLiteral("&") + secondOut.fullName(),
                                  nullptr, nullptr);
    };
    channel().enterMainUI(0, observer);
    toWorkbench.close();
    ASSERT_TRUE(waitUntil([&] { return again; }));
    ASSERT_TRUE(secondIn.awaitClient());
    EXPECT_TRUE(secondIn.write(frame(kOpenSettings)));
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); }));
    EXPECT_EQ(calls, std::vector<std::string>{"settings"});
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

TEST_F(KTChannelManagerTest, SecondStartUpClosesThePipesOfTheFirst)
{
    std::vector<int> codes;
    const auto record = [&](int code, const std::string&, const QString&) {
        codes.push_back(code);
    };
    ASSERT_TRUE(startUp(record));
    pavo::HostPipe secondIn(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
    HostReader secondOut(uniquePipeName());
    ASSERT_TRUE(channel().startUp(QStringLiteral("pipe?param=") + secondIn.fullName() +
                                      QStringLiteral("&") + secondOut.fullName(),
                                  record, nullptr));
    ASSERT_TRUE(fromWorkbench.waitForEnd());
    ASSERT_TRUE(secondIn.awaitClient());
    EXPECT_FALSE(toWorkbench.write("x")) << "the first reader has gone";
    channel().enterMainUI(11, recordingObserver());
    ASSERT_TRUE(secondOut.messages().waitForCount(1));
    EXPECT_TRUE(secondIn.write(frame(kOpenSettings)));
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); }));
    EXPECT_EQ(fromWorkbench.messages().count(), 0U);
    EXPECT_TRUE(codes.empty());
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(KTChannelManagerTest, NothingOfAnEarlierStartUpIsKept)
{
    ASSERT_TRUE(startUp());
    const auto pipes = KTChannelManagerProbe::pipes();
    for (const auto& pipe : pipes)
        ASSERT_TRUE(pipe);
    EXPECT_FALSE(channel().startUp(QString(), nullptr, nullptr));
    QCoreApplication::processEvents();
    for (const auto& pipe : pipes)
        EXPECT_FALSE(pipe);
}

TEST_F(KTChannelManagerTest, StartingAgainAndAgainTakesNoMemory)
{
    if (!kHeapIsMeasurable)
        GTEST_SKIP() << "the sanitizer keeps what is freed";
    // No host: only what a start-up itself takes is measured.
    const auto startOften = [this](int times) {
        for (int i = 0; i < times; ++i) {
            EXPECT_TRUE(channel().startUp(QStringLiteral("pipe?param=no&host"), nullptr, nullptr));
            EXPECT_FALSE(channel().startUp(QString(), nullptr, nullptr));
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            log.clear();
        }
    };
    startOften(20);
    const std::size_t before = heapBytesInUse();
    startOften(100);
    // A pair of pipes that is kept takes more than 2 KiB.
    EXPECT_LT(heapBytesInUse(), before + 50 * 1024);
}

TEST_F(KTChannelManagerTest, EndOfTheFirstPipeThatASecondStartUpOvertakesIsIgnored)
{
    std::vector<int> codes;
    const auto record = [&](int code, const std::string&, const QString&) {
        codes.push_back(code);
    };
    ASSERT_TRUE(startUp(record));
    toWorkbench.close();
    // Seen without the event loop: the end is on its way to the manager when it starts anew.
    while (!log.has(ERROR_LOG_LEVEL, "read data error 109"))
        std::this_thread::yield();
    pavo::HostPipe secondIn(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
    HostReader secondOut(uniquePipeName());
    ASSERT_TRUE(channel().startUp(QStringLiteral("pipe?param=") + secondIn.fullName() +
                                      QStringLiteral("&") + secondOut.fullName(),
                                  record, nullptr));
    ASSERT_TRUE(secondIn.awaitClient());
    channel().enterMainUI(0, recordingObserver());
    EXPECT_TRUE(secondIn.write(frame(kOpenSettings)));
    ASSERT_TRUE(waitUntil([&] { return !calls.empty(); }));
    EXPECT_EQ(calls, std::vector<std::string>{"settings"});
    EXPECT_TRUE(codes.empty());
}

TEST_F(KTChannelManagerTest, FailedSecondStartUpLeavesTheChannelInert)
{
    ASSERT_TRUE(startUp());
    EXPECT_FALSE(channel().startUp(QStringLiteral("nothing"), nullptr, nullptr));
    EXPECT_FALSE(channel().isSupported());
    channel().enterMainUI(0, recordingObserver());
    ASSERT_TRUE(fromWorkbench.waitForEnd());
    EXPECT_EQ(fromWorkbench.messages().count(), 0U);
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

TEST_F(KTChannelManagerTest, EnteringSendsThenReplaysBetweenItsTwoRecords)
{
    ASSERT_TRUE(startUp());
    KTChannelManagerProbe::context()->skinName = "blue";
    log.clear();
    channel().enterMainUI(0, recordingObserver());
    ASSERT_TRUE(fromWorkbench.messages().waitForCount(1));
    std::vector<std::string> own;
    for (const LogRecord& record : log.records()) {
        if (record.file != "pipe/NamedPipe_win.cpp")
            own.push_back(record.text);
    }
    EXPECT_EQ(own,
              (std::vector<std::string>{"KTChannelManager::enterMainUI enter", "change skin blue",
                                        "KTChannelManager::enterMainUI leave"}));
}

TEST(KTStartUpContextTest, IsEmptyWhenConstructed)
{
    const KTStartUpContext context;
    EXPECT_FALSE(context.startUpCallback);
    EXPECT_FALSE(context.pinChangedCallback);
    EXPECT_TRUE(context.hotKeys.empty());
    EXPECT_TRUE(context.shortcuts.empty());
    EXPECT_TRUE(context.skinName.empty());
    EXPECT_EQ(context.windowType, 0);
    EXPECT_TRUE(context.windowText1.empty());
    EXPECT_TRUE(context.windowText2.empty());
    EXPECT_TRUE(context.groupText1.empty());
    EXPECT_TRUE(context.groupText2.empty());
}

TEST(KTStartUpContextTest, CopiesAndMovesMemberWise)
{
    int calls = 0;
    KTStartUpContext context;
    context.startUpCallback = [&](int, const std::string&, const QString&) { ++calls; };
    context.hotKeys = {keyInfo(true, "f", Qt::Key_F1, Qt::ControlModifier)};
    context.groupText2 = "g";
    const KTStartUpContext copy = context;
    KTStartUpContext moved = std::move(context);
    moved = copy;
    moved.startUpCallback(0, {}, {});
    copy.startUpCallback(0, {}, {});
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(moved.hotKeys.at(0).functionName, "f");
    EXPECT_EQ(moved.hotKeys.at(0).key, Qt::Key_F1);
    EXPECT_EQ(moved.groupText2, "g");
}
