// File descriptors and users, which only this system gives a test.

#include "platform/MessageWindow.h"
#include "platform/posix/UniqueFd.h"
#include "tests/process/Tool.h"
#include "tests/support/AccountsFixture.h"
#include "tests/support/ChannelFixture.h"
#include "tests/support/RoleProcess.h"

#include <QFile>
#include <QTemporaryDir>

#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
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

/// While it lives, no file of this process and its children grows beyond a size: what is too much
/// fails as on a disk that has become full.
class SmallFiles
{
public:
    explicit SmallFiles(rlim_t size)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small = {size, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallFiles()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        ::signal(SIGXFSZ, m_handler);
    }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;

private:
    rlimit m_before = {};
    /// It would end who writes too much. Children ignore it, too.
    void (*const m_handler)(int) = ::signal(SIGXFSZ, SIG_IGN);
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

const Role kStartRole("start-without-descriptors", [](const QStringList& arguments) {
    const rlimit noCore = {0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    int count = 0;
    const QCoreApplication application(count, nullptr);
    QCoreApplication::setApplicationName(arguments[0]);
    sayToParent("starting");
    const NoDescriptors none;
    KTChannelManager::sharedInstance()->startUp(arguments[1], nullptr, nullptr);
    nextLineFromParent();
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

TEST_F(AccountsWithoutDescriptorsTest, WorkbenchThatStartsIsEndedByQtAndDisturbsNobody)
{
    MAManagerProbe manager;
    ASSERT_TRUE(manager.join("pin"));
    HostReader out(uniquePipeName());
    pavo::HostPipe in(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
    RoleProcess newcomer(
        "start-without-descriptors",
        {QCoreApplication::applicationName(),
         QStringLiteral("pipe?param=") + in.fullName() + QLatin1Char('&') + out.fullName()});
    EXPECT_EQ(newcomer.nextLine(), "starting");
    EXPECT_EQ(newcomer.nextLine(), "") << "there is no thread for its pipe without an event loop";
    EXPECT_EQ(newcomer.waitForExit(), -1) << "by a signal";
    EXPECT_FALSE(newcomer.isRunning());
    EXPECT_FALSE(out.hasEnded()) << "the pipes can still be had";
    manager.changeLoginState(5);
    EXPECT_EQ(manager.accounts().front().loginState, 5);
    EXPECT_TRUE(complaints().empty());
}

TEST(FullDiskPosixTest, LogOnADiskThatBecomesFullEndsThereAndStopsNothing)
{
    constexpr rlim_t kRoom = 2000;
    const QTemporaryDir folder;
    const QFile file(folder.filePath(QStringLiteral("log.txt")));
    const SmallFiles small(kRoom);
    const ToolResult result = workWithLog(file.fileName());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_EQ(file.size(), kRoom);
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
