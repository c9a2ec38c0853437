// A machine without a display, which ctest takes away from these tests.

#include "platform/MessageWindow.h"
#include "tests/process/Tool.h"
#include "tests/support/AccountsFixture.h"

namespace {

#ifdef _WIN32
constexpr bool kWindowsNeedADisplay = true;
#else
constexpr bool kWindowsNeedADisplay = false;
#endif

class NoDisplayTest : public AccountsFixture
{
protected:
    void SetUp() override
    {
        if (qEnvironmentVariableIsSet("DISPLAY"))
            GTEST_SKIP() << "there is a display";
    }
};

} // namespace

TEST_F(NoDisplayTest, ChannelWorks)
{
    const ToolResult result = ScriptRun("expect StartupCompleted\n"
                                        "OpenBaseInfoSettingWindow\n"
                                        "workbench quit\n"
                                        "expect-exit 0\n")
                                  .play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
}

TEST_F(NoDisplayTest, AccountsAreSharedAndMissingWindowsAreReported)
{
    const pavo::MessageWindow window(QStringLiteral("class"), QCoreApplication::applicationName());
    ASSERT_EQ(window.handle() == nullptr, kWindowsNeedADisplay);
    const std::string title = QCoreApplication::applicationName().toStdString();
    MAManagerProbe manager;
    MAManagerProbe neighbour;
    ASSERT_TRUE(manager.join("pin"));
    ASSERT_TRUE(neighbour.initManager("app", "neighbour", "class", title, 1));
    EXPECT_EQ(order(manager.accounts()), "pin:0 neighbour:2");
    EXPECT_FALSE(manager.checkWindowVisible());
    log.clear();
    EXPECT_TRUE(manager.switchLoginState(5));
    EXPECT_EQ(complaints(), kWindowsNeedADisplay
                                ? std::vector<std::string>{"ERROR not find window, " + title}
                                : std::vector<std::string>());
    EXPECT_EQ(neighbour.quitCurrentAccount(), 1);
    EXPECT_EQ(manager.quitCurrentAccount(), 1);
}
