#include "tests/support/ChannelFixture.h"

#include "pavo_core/PAVOCore.h"

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;

// What happens when the main window is entered. Every test runs in a process of its own: there is
// one manager in a process.

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

class MainWindowTest : public ChannelFixture
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

} // namespace

TEST_F(MainWindowTest, EnterMainUISendsStartupCompletedWithTheClientVersion)
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

TEST_F(MainWindowTest, AnotherObserverReplacesAndTheSameOneStays)
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

TEST_F(MainWindowTest, ObserverThatIsReplacedMayTakeItselfOutOnItsWay)
{
    // What it holds, as a main window, takes the observer out when it is destroyed.
    std::shared_ptr<void> window(nullptr, [](void*) { channel().enterMainUI(0, nullptr); });
    ASSERT_TRUE(startUp());
    auto* first = new KTChannelObserver;
    first->onOpenBaseInfoSetting = [held = std::move(window)] {};
    channel().enterMainUI(0, first);
    channel().enterMainUI(0, recordingObserver());
    KTChannelManagerProbe::receive(R"({"name":"OpenBaseInfoSettingWindow"})");
    EXPECT_EQ(calls, std::vector<std::string>{"settings"});
}

TEST_F(MainWindowTest, ParkedRequestsAreReplayedOnceAndInOrder)
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

TEST_F(MainWindowTest, NothingParkedIsNothingReplayed)
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

TEST_F(MainWindowTest, ParkedRequestsWithoutACallbackGoWithTheContext)
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

TEST_F(MainWindowTest, ParkedSkinThatIsUnknownIsLogged)
{
    ASSERT_TRUE(startUp());
    KTChannelManagerProbe::context()->skinName = "lakeblue";
    channel().enterMainUI(0, recordingObserver());
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR Unprocessed Skinlakeblue"});
}

TEST_F(MainWindowTest, ReplayGoesOnWithTheObserverThatACallbackHandsOver)
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

TEST_F(MainWindowTest, StartUpInTheMiddleOfTheReplayKeepsItsCallbacks)
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

TEST_F(MainWindowTest, StartingAndEnteringOverAndOverInTheMiddleOfTheReplayKeepsTheRest)
{
    const auto startUpWithoutAHost = [] {
        EXPECT_TRUE(
            channel().startUp(QStringLiteral("pipe?param=nowhere&nowhere"), nullptr, nullptr));
    };
    startUpWithoutAHost();
    parkEverything();
    auto* observer = recordingObserver();
    observer->onSkinChanged = [&](int) {
        for (int round = 0; round < 2; ++round) {
            startUpWithoutAHost();
            channel().enterMainUI(1, observer);
            channel().enterMainUI(2, observer);
        }
    };
    channel().enterMainUI(0, observer);
    EXPECT_EQ(calls, (std::vector<std::string>{"shortcuts s 1", "hotKeys h 1", "window 9 w1 w2",
                                               "group g1 g2"}));
    EXPECT_FALSE(KTChannelManagerProbe::context());
}

TEST_F(MainWindowTest, EventLoopInTheMiddleOfTheReplayServesTheHost)
{
    ASSERT_TRUE(startUp());
    parkEverything();
    auto* observer = recordingObserver();
    observer->onShortcutChanged = [this](const auto&) {
        hostSends(R"({"name":"OpenBaseInfoSettingWindow"})");
        EXPECT_TRUE(waitUntil([this] { return calls.back() == "settings"; }));
        EXPECT_TRUE(KTChannelManagerProbe::context()) << "until its replay is over";
    };
    channel().enterMainUI(0, observer);
    EXPECT_EQ(calls, (std::vector<std::string>{"skin 3", "settings", "hotKeys h 1",
                                               "window 9 w1 w2", "group g1 g2"}));
}

TEST_F(MainWindowTest, EnteringSendsThenReplaysBetweenItsTwoRecords)
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
