#include "tests/support/LoginFixture.h"
#include "tests/support/Memory.h"

#include <thread>
#include <utility>

// A workbench may start the channel anew at any time, also from within whatever it is called by,
// while more of the first host is on its way. Every test runs in a process of its own: there is one
// manager in a process.

using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;

namespace {

class StartUpAgain : public LoginFixture
{
protected:
    /// To be called while the manager handles a message: starts anew when the first host's next
    /// message, and its end, have been read and wait to be handled.
    void startAgain()
    {
        if (std::exchange(m_hasStartedAgain, true))
            return;
        EXPECT_TRUE(toWorkbench.write(frame(R"({"name":"late"})")));
        endTheFirstHost();
        EXPECT_TRUE(startUpWithTheSecondHost());
    }

    /// Without the event loop: that it has ended is on its way to the manager.
    void endTheFirstHost()
    {
        toWorkbench.close();
        while (!log.has(ERROR_LOG_LEVEL, "read data error 109"))
            std::this_thread::yield();
    }

    auto recordCodes()
    {
        return [this](int code, const std::string&, const QString&) { m_codes.push_back(code); };
    }

    bool startUpWithTheSecondHost()
    {
        return channel().startUp(QStringLiteral("pipe?param=") + m_in.fullName() +
                                     QLatin1Char('&') + m_out.fullName(),
                                 recordCodes(), nullptr);
    }

    void expectThatOnlyTheSecondHostIsHeard()
    {
        ASSERT_TRUE(fromWorkbench.waitForEnd());
        ASSERT_TRUE(m_in.awaitClient());
        ASSERT_TRUE(m_out.waitForClient());
        ASSERT_TRUE(m_in.write(frame(R"({"name":"new"})")));
        ASSERT_TRUE(log.waitFor(WARN_LOG_LEVEL, "Unprocessed new"));
        EXPECT_FALSE(log.has(WARN_LOG_LEVEL, "Unprocessed late"));
        EXPECT_TRUE(m_codes.empty()) << "the end of the first host is none of the second's";
        channel().unreadMsgChanged(7);
        EXPECT_TRUE(m_out.messages().waitForCount(1));
    }

    bool m_hasStartedAgain = false;

private:
    std::vector<int> m_codes;
    pavo::HostPipe m_in{uniquePipeName(), pavo::HostPipe::Direction::HostWrites};
    HostReader m_out{uniquePipeName()};
};

using Act = std::function<void()>;

/// A request of the host, and the callback that it leads to.
struct Request
{
    const char* name;
    const char* text;
    void (*arrange)(KTChannelObserver& observer, Act act);
};

constexpr char kSettings[] =
    R"({"name":"ChangeSetting","arguments":["{\"skinName\":\"red\",\"hotKey\":[{}],)"
    R"(\"shortcut\":[{}]}"]})";

const Request kRequests[] = {
    {"Conversation", R"({"name":"OpenLXWindow","arguments":["a",1,"b"]})",
     [](KTChannelObserver& observer, Act act) {
         observer.onOpenLXWindow = [act](int, const std::string&, const std::string&) { act(); };
     }},
    {"Group", R"({"name":"OpenLXGroup","arguments":["a","b"]})",
     [](KTChannelObserver& observer, Act act) {
         observer.onOpenLXGroup = [act](const std::string&, const std::string&) { act(); };
     }},
    {"BaseInformation", R"({"name":"OpenBaseInfoSettingWindow"})",
     [](KTChannelObserver& observer, Act act) { observer.onOpenBaseInfoSetting = std::move(act); }},
    {"Skin", R"({"name":"ChangeSkin","arguments":["{\"skinName\":\"red\"}"]})",
     [](KTChannelObserver& observer, Act act) { observer.onSkinChanged = [act](int) { act(); }; }},
    {"SkinOfTheSettings", kSettings,
     [](KTChannelObserver& observer, Act act) { observer.onSkinChanged = [act](int) { act(); }; }},
    {"HotKeys", kSettings,
     [](KTChannelObserver& observer, Act act) {
         observer.onHotKeyChanged = [act](const std::vector<KTKeyInfo>&) { act(); };
     }},
    {"Shortcuts", kSettings,
     [](KTChannelObserver& observer, Act act) {
         observer.onShortcutChanged = [act](const std::vector<KTKeyInfo>&) { act(); };
     }},
    {"UnreadList", R"({"name":"ShowUnreadMessageList","arguments":[true,1,2,3,4]})",
     [](KTChannelObserver& observer, Act act) {
         observer.onShowUnreadMessageList = [act](bool, QRect) { act(); };
     }},
    {"Page", R"({"name":"Request","arguments":[{"api":"showLXAccusation","url":"u"}]})",
     [](KTChannelObserver& observer, Act act) {
         observer.onRequest = [act](const std::string&) { act(); };
     }}};

void PrintTo(const Request& request, std::ostream* out)
{
    *out << request.name;
}

class StartUpAgainTest : public StartUpAgain, public testing::WithParamInterface<Request>
{
};

} // namespace

TEST_P(StartUpAgainTest, FromACallbackOfTheMainWindow)
{
    ASSERT_TRUE(startUp());
    auto* observer = new KTChannelObserver;
    GetParam().arrange(*observer, [this] { startAgain(); });
    channel().enterMainUI(0, observer);
    hostSends(GetParam().text);
    ASSERT_TRUE(waitUntil([this] { return m_hasStartedAgain; }));
    expectThatOnlyTheSecondHostIsHeard();
}

INSTANTIATE_TEST_SUITE_P(Requests, StartUpAgainTest, testing::ValuesIn(kRequests),
                         [](const auto& request) { return std::string(request.param.name); });

TEST_F(StartUpAgain, FromTheStartUpCallback)
{
    ASSERT_TRUE(startUp([this](int code, const std::string&, const QString&) {
        EXPECT_EQ(code, 1);
        startAgain();
    }));
    hostSends(R"({"name":"Login","arguments":["waiter",false,1,"desktop","","secret"]})");
    ASSERT_TRUE(waitUntil([this] { return m_hasStartedAgain; }));
    expectThatOnlyTheSecondHostIsHeard();
}

TEST_F(StartUpAgain, WhenThePipeHasClosed)
{
    ASSERT_TRUE(startUp());
    auto* observer = new KTChannelObserver;
    observer->onPipeClosed = [this] { m_hasStartedAgain = startUpWithTheSecondHost(); };
    channel().enterMainUI(0, observer);
    ASSERT_TRUE(fromWorkbench.messages().waitForCount(1));
    toWorkbench.close();
    ASSERT_TRUE(waitUntil([this] { return m_hasStartedAgain; }));
    expectThatOnlyTheSecondHostIsHeard();
}

TEST_F(StartUpAgain, WhileTheFirstHostLives)
{
    ASSERT_TRUE(startUp(recordCodes()));
    ASSERT_TRUE(startUpWithTheSecondHost());
    expectThatOnlyTheSecondHostIsHeard();
    EXPECT_FALSE(toWorkbench.write("x")) << "the first reader has gone";
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"WARN Unprocessed new"});
}

TEST_F(StartUpAgain, BeforeTheEndOfTheFirstHostIsHandled)
{
    ASSERT_TRUE(startUp(recordCodes()));
    endTheFirstHost();
    ASSERT_TRUE(startUpWithTheSecondHost());
    channel().enterMainUI(0, recordingObserver());
    expectThatOnlyTheSecondHostIsHeard();
    EXPECT_TRUE(calls.empty()) << "no pipe has closed";
}

TEST_F(StartUpAgain, NothingOfAnEarlierStartUpIsKept)
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

TEST_F(StartUpAgain, StartingAgainAndAgainTakesNoMemory)
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

TEST_F(StartUpAgain, FailedSecondStartUpLeavesTheChannelInert)
{
    ASSERT_TRUE(startUp());
    EXPECT_FALSE(channel().startUp(QStringLiteral("nothing"), nullptr, nullptr));
    EXPECT_FALSE(channel().isSupported());
    channel().enterMainUI(0, recordingObserver());
    ASSERT_TRUE(fromWorkbench.waitForEnd());
    EXPECT_EQ(fromWorkbench.messages().count(), 0U);
}
