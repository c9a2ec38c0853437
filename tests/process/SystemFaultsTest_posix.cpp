// File descriptors and users, which only this system gives a test.

#include "platform/MessageWindow.h"
#include "platform/posix/UniqueFd.h"
#include "tests/support/AccountsFixture.h"
#include "tests/support/ChannelFixture.h"
#include "tests/support/RoleProcess.h"

#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace {

using pavo::posix::UniqueFd;

constexpr uid_t kOtherUser = 65534;

/// Leaves this process without a file descriptor to open while it lives.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        // A fresh limit a little above what is in use: the default may be a million.
        const rlimit few = {256, m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
        do
            m_wasted.emplace_back(::dup(STDERR_FILENO));
        while (m_wasted.back());
    }
    ~NoDescriptors() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    static rlimit limit()
    {
        rlimit limit = {};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        return limit;
    }

    const rlimit m_before = limit();
    std::vector<UniqueFd> m_wasted;
};

using ChannelWithoutDescriptorsTest = ChannelFixture;

using AccountsWithoutDescriptorsTest = AccountsFixture;

/// What another user sees of a window who knows its class, its title and the owner's folder.
const Role kOtherUserRole("find-window-as-other-user", [](const QStringList& arguments) {
    if (setgroups(0, nullptr) != 0 || setgid(kOtherUser) != 0 || setuid(kOtherUser) != 0 ||
        setuid(0) == 0)
        return 1;
    const std::wstring name = arguments[0].toStdWString();
    sayToParent(FindWindowW(name.c_str(), name.c_str()) ? "found" : "none");
    sayToParent(std::to_string(RegisterWindowMessageW(name.c_str())));
    return 0;
});

} // namespace

TEST_F(ChannelWithoutDescriptorsTest, OpenChannelGoesOn)
{
    ASSERT_TRUE(startUp());
    channel().enterMainUI(0, recordingObserver());
    ASSERT_TRUE(fromWorkbench.messages().waitForCount(1));
    const NoDescriptors none;
    hostSends(R"({"name":"OpenBaseInfoSettingWindow"})");
    EXPECT_TRUE(waitUntil([this] { return calls == std::vector<std::string>{"settings"}; }));
    channel().unreadMsgChanged(3);
    EXPECT_TRUE(fromWorkbench.messages().waitForCount(2));
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(AccountsWithoutDescriptorsTest, ListIsKeptWithoutTheGateAndWindowsAreNotFound)
{
    MAManagerProbe manager;
    ASSERT_TRUE(manager.join("pin"));
    {
        const NoDescriptors none;
        manager.changeLoginState(5);
        EXPECT_EQ(manager.accounts().front().loginState, 5);
        EXPECT_TRUE(complaints().empty());
        manager.post("class", "title", 1, 0);
        EXPECT_EQ(complaints(), std::vector<std::string>{"ERROR not find window, title"});
    }
    log.clear();
    manager.changeLoginState(6);
    EXPECT_EQ(manager.accounts().front().loginState, 6);
    EXPECT_EQ(manager.quitCurrentAccount(), 1);
}

TEST_F(AccountsWithoutDescriptorsTest, NewcomerIsRefusedUntilThereAreSome)
{
    MAManagerProbe manager;
    {
        const NoDescriptors none;
        EXPECT_FALSE(manager.join("pin"));
        EXPECT_EQ(complaints(),
                  (std::vector<std::string>{"ERROR register message failed",
                                            "ERROR pin  create share memory failed"}));
    }
    EXPECT_TRUE(manager.join("pin"));
}

TEST(WindowsOfAnotherUserTest, AreNeitherFoundNorTold)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can be somebody else";
    const QString name = QStringLiteral("pavo-window-%1").arg(QCoreApplication::applicationPid());
    const pavo::MessageWindow window(name, name);
    ASSERT_NE(window.handle(), nullptr);
    RoleProcess other("find-window-as-other-user", {name});
    EXPECT_EQ(other.nextLine(), "none");
    EXPECT_EQ(other.nextLine(), "0") << "it does not even get a number to post";
    EXPECT_EQ(other.waitForExit(), 0);
}
