#include "tests/support/LoginFixture.h"

#include <thread>
#include <utility>

// A workbench may start the channel anew from within whatever it is called by, while more of the
// first host is on its way. Every test runs in a process of its own: there is one manager in a
// process.

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
        toWorkbench.close();
        while (!log.has(ERROR_LOG_LEVEL, "read data error 109"))
            std::this_thread::yield();
        EXPECT_TRUE(channel().startUp(
            QStringLiteral("pipe?param=") + m_in.fullName() + QLatin1Char('&') + m_out.fullName(),
            [this](int code, const std::string&, const QString&) { m_codes.push_back(code); },
            nullptr));
    }

    void expectThatOnlyTheSecondHostIsHeard()
    {
        ASSERT_TRUE(waitUntil([this] { return m_hasStartedAgain; }));
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

private:
    bool m_hasStartedAgain = false;
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
    expectThatOnlyTheSecondHostIsHeard();
}
