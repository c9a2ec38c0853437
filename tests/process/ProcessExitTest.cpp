#include "ipc/KTChannelManager.h"
#include "tests/support/Host.h"
#include "tests/support/RoleProcess.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

// A workbench process that leaves with both pipes open and traffic on both, over and over.

namespace {

constexpr int kRounds = 100;
constexpr int kMessagesBeforeLeaving = 20;

/// Sends from a thread of its own until it is stopped.
class Sender
{
public:
    ~Sender() { stop(); }

    void stop()
    {
        m_stopping = true;
        if (m_thread.joinable())
            m_thread.join();
    }

private:
    std::atomic<bool> m_stopping{false};
    std::thread m_thread{[this] {
        while (!m_stopping)
            KTChannelManager::sharedInstance()->openSetting("sent from another thread");
    }};
};

/// A workbench that leaves while both pipes are busy, in the way that its first argument says.
int leave(const QStringList& arguments)
{
    const QString& way = arguments.at(0);
    static char name[] = "workbench";
    static char* words[] = {name, nullptr};
    static int count = 1;
    auto application = std::make_unique<QCoreApplication>(count, words);
    KTChannelManager& channel = *KTChannelManager::sharedInstance();
    if (!channel.startUp(arguments.at(1), nullptr, nullptr))
        return 3;
    if (way == QLatin1String("at-once"))
        return 0;
    auto* observer = new KTChannelObserver;
    int received = 0;
    Sender sender;
    observer->onOpenBaseInfoSetting = [&] {
        channel.unreadMsgChanged(++received);
        if (received < kMessagesBeforeLeaving)
            return;
        if (way == QLatin1String("exit")) {
            sender.stop();
            std::exit(0); // The application object stays, and so do the pipes' threads.
        }
        QCoreApplication::quit();
    };
    channel.enterMainUI(0, observer);
    QCoreApplication::exec();
    if (way == QLatin1String("keep-application"))
        static_cast<void>(application.release());
    application.reset();
    sender.stop();
    return 0;
}

const Role kWorkbench("workbench", leave);

/// A workbench that leaves with an object of its own that is still to be deleted, long after the
/// host has gone.
int leaveWithoutHost(const QStringList& arguments)
{
    {
        static char name[] = "workbench";
        static char* words[] = {name, nullptr};
        static int count = 1;
        const QCoreApplication application(count, words);
        int code = 0;
        const bool started = KTChannelManager::sharedInstance()->startUp(
            arguments.at(0),
            [&](int reported, const std::string&, const QString&) { code = reported; }, nullptr);
        if (!started || !waitUntil([&] { return code == -1; }))
            return 3;
        // What the pipes had is deleted, as an event loop would have done by now.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        auto* pending = new QObject;
        QObject::connect(pending, &QObject::destroyed, [] { sayToParent("deleted"); });
        pending->deleteLater();
    }
    sayToParent("left");
    return 0;
}

const Role kWithoutHost("without-host", leaveWithoutHost);

class ProcessExitTest : public testing::TestWithParam<const char*>
{
};

} // namespace

TEST_P(ProcessExitTest, IsClean)
{
    std::size_t sent = 0;
    for (int round = 0; round < kRounds; ++round) {
        const HostFlood in(uniquePipeName(), frame(R"({"name":"OpenBaseInfoSettingWindow"})"));
        const HostReader out(uniquePipeName());
        RoleProcess workbench("workbench", {QString::fromUtf8(GetParam()),
                                            QStringLiteral("pipe?param=") + in.fullName() +
                                                QLatin1Char('&') + out.fullName()});
        EXPECT_EQ(workbench.waitForExit(), 0) << "round " << round;
        sent += out.messages().count();
    }
    // A workbench may have left before its writer was open, but not each time.
    if (std::string(GetParam()) != "at-once") {
        EXPECT_GT(sent, static_cast<std::size_t>(kRounds));
    }
}

TEST(ProcessExitWithoutHost, DeletesNothingOfTheWorkbench)
{
    pavo::HostPipe in(uniquePipeName(), pavo::HostPipe::Direction::HostWrites);
    const HostReader out(uniquePipeName());
    RoleProcess workbench("without-host", {QStringLiteral("pipe?param=") + in.fullName() +
                                           QLatin1Char('&') + out.fullName()});
    ASSERT_TRUE(in.awaitClient());
    in.close();
    EXPECT_EQ(workbench.nextLine(), "left");
    EXPECT_EQ(workbench.waitForExit(), 0);
}

#ifdef _WIN32
// A process that leaves without destroying its application has its threads ended by the system,
// wherever they are and before anything of ours runs. Wine 8.0 then may wait for ever for a lock of
// its own that such a thread held, so there is nothing to be learned from it.
INSTANTIATE_TEST_SUITE_P(Ways, ProcessExitTest, testing::Values("quit", "at-once"));
#else
INSTANTIATE_TEST_SUITE_P(Ways, ProcessExitTest,
                         testing::Values("quit", "exit", "keep-application", "at-once"));
#endif
