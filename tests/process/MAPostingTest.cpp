// Posts between processes: to one that is busy, and to one that was killed.

#include "tests/support/RoleProcess.h"
#include "tests/support/Workbenches.h"

#include <memory>

namespace {

using Texts = std::vector<std::string>;

/// Tells the senders apart in what they post; more than any of them posts.
constexpr int kSenderUnit = 100000;
/// For all posts of a burst, each of which takes its time on a loaded machine.

/// Joins and, when told to, posts that many login states to a window, each with its number; says
/// how many complaints there were, and the last one.
const Role kSender("post-burst", [](const QStringList& arguments) {
    QCoreApplication::setApplicationName(arguments[0]);
    const int number = arguments[1].toInt();
    const std::string className = arguments[2].toStdString();
    const std::string title = arguments[3].toStdString();
    MAManagerProbe manager;
    sayToParent(manager.join("sender-" + std::to_string(number)) ? "joined" : "refused");
    const int count = std::atoi(nextLineFromParent().c_str());
    const LogRecorder log;
    for (int i = 0; i < count; ++i)
        manager.post(className, title, kMALoginState, number * kSenderUnit + i);
    const Texts complaints = log.complaints();
    sayToParent(std::to_string(complaints.size()) +
                (complaints.empty() ? "" : ' ' + complaints.back()));
    return 0;
});

class Delivery : public QAbstractNativeEventFilter
{
public:
    explicit Delivery(MAManager& manager)
        : m_manager(manager)
    {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray& /*type*/, void* message, long* /*result*/) override
    {
        const auto* posted = static_cast<const MSG*>(message);
        return m_manager.handleNativeEvent(posted->message, static_cast<long>(posted->wParam),
                                           static_cast<long>(posted->lParam));
    }

private:
    MAManager& m_manager;
};

/// An account with a window, until it is killed.
const Role kVictim("workbench", [](const QStringList& arguments) {
    QCoreApplication::setApplicationName(arguments[0]);
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    Workbench workbench(arguments[1].toStdString());
    const Delivery delivery(workbench.manager);
    sayToParent(workbench.join() && workbench.window.handle() ? "joined" : "refused");
    return QCoreApplication::exec();
});

class MAPostingTest : public WorkbenchesFixture
{
protected:
    using Process = std::unique_ptr<RoleProcess>;

    MAPostingTest()
    {
        // In place of the description of each call, of which there are many here.
        auto* observer = new MAObserver;
        observer->messageCallback = [](int, auto&, auto&) {};
        observer->loginStateCallback = [this](int value) { values.push_back(value); };
        a.manager.addObserver(observer);
    }

    /// A process that is about to post to the window of `target`.
    static Process sender(int number, const MAAccountInfo& target)
    {
        auto process = std::make_unique<RoleProcess>(
            "post-burst", QStringList{QCoreApplication::applicationName(), QString::number(number),
                                      QString::fromStdString(target.className),
                                      QString::fromStdString(target.title)});
        EXPECT_EQ(process->nextLine(), "joined");
        return process;
    }

    /// A process that has the account "victim".
    static Process workbench()
    {
        auto process = std::make_unique<RoleProcess>(
            "workbench",
            QStringList{QCoreApplication::applicationName(), QStringLiteral("victim")});
        EXPECT_EQ(process->nextLine(), "joined");
        return process;
    }
    MAAccountInfo victimsAccount()
    {
        for (const MAAccountInfo& account : a.manager.accounts()) {
            if (account.pin == "victim")
                return account;
        }
        return {};
    }

    /// Has `senders` processes post `count` messages each to "a", which handles none meanwhile.
    void expectWholeBurst(int senders, int count)
    {
        joinAll();
        std::vector<Process> processes;
        for (int number = 0; number < senders; ++number)
            processes.push_back(sender(number, a.manager.own()));
        for (const Process& process : processes)
            process->say(std::to_string(count));
        for (const Process& process : processes)
            ASSERT_EQ(process->nextLine(kBurstMs), "0") << "complaints";
        ASSERT_TRUE(values.empty());
        ASSERT_TRUE(
            waitUntil([&] { return values.size() == std::size_t(senders) * count; }, kBurstMs));
        std::vector<int> next(processes.size());
        for (const int value : values)
            ASSERT_EQ(value % kSenderUnit, next.at(std::size_t(value / kSenderUnit))++);
    }

    std::vector<int> values; ///< login states that reached account "a"
};

} // namespace

TEST_F(MAPostingTest, BurstOfOneSenderArrivesWholeAndInOrder)
{
    expectWholeBurst(1, 10000);
}

TEST_F(MAPostingTest, BurstOfSeveralSendersArrivesWholeAndInEachOnesOrder)
{
    expectWholeBurst(4, 2500);
}

TEST_F(MAPostingTest, BeyondTheQueuesLimitPostsFailAndNobodyWaits)
{
    joinAll();
    const Process process = sender(0, a.manager.own());
    constexpr int kCount = 25000;
    process->say(std::to_string(kCount));
    const std::string answer = process->nextLine(kBurstMs);
    const int failed = std::atoi(answer.c_str());
    EXPECT_EQ(answer, failed == 0
                          ? "0" // this system's queues have no end
                          : std::to_string(failed) + " ERROR post process message failed, 1816");
    EXPECT_LE(failed, kCount - 10000);
    ASSERT_TRUE(waitUntil([&] { return values.size() == std::size_t(kCount - failed); }, kBurstMs));
    for (int i = 0; i < kCount - failed; ++i)
        ASSERT_EQ(values[std::size_t(i)], i) << "the first ones, in order";
}

TEST_F(MAPostingTest, WindowOfAKilledProcessIsGoneAtOnceForEveryProcess)
{
    joinAll();
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        const Process victim = workbench();
        const MAAccountInfo account = victimsAccount();
        const Process third = sender(round, account);
        forget();
        a.manager.post(account.className, account.title, kMALoginState, 0);
        EXPECT_TRUE(complaints().empty());

        victim->kill();
        const Texts complaint{"ERROR not find window, " + account.title};
        a.manager.post(account.className, account.title, kMALoginState, 0);
        EXPECT_EQ(complaints(), complaint);
        third->say("1");
        EXPECT_EQ(third->nextLine(), "1 " + complaint.front());
        log.clear();
        EXPECT_TRUE(a.manager.switchToAccount(account));
        EXPECT_EQ(complaints(), complaint);
        EXPECT_EQ(a.manager.selected().pin, "a") << "the target would have entered itself";
    }
}

TEST_F(MAPostingTest, FrontProcessThatWasKilledIsReportedByEveryOperationThatPostsToIt)
{
    joinAll();
    const Process victim = workbench();
    const MAAccountInfo account = victimsAccount();
    ASSERT_TRUE(a.manager.switchToAccount(account));
    ASSERT_TRUE(waitUntil([&] { return a.manager.selected().pin == "victim"; }));
    victim->kill();
    const std::pair<const char*, void (*)(MAManagerProbe&)> operations[] = {
        {"popupMainWindow", [](MAManagerProbe& manager) { manager.popupMainWindow(true); }},
        {"switchShowState", [](MAManagerProbe& manager) { manager.switchShowState(); }},
        {"switchedHide", [](MAManagerProbe& manager) { manager.switchedHide(); }},
        {"changeCurrentSkin", [](MAManagerProbe& manager) { manager.changeCurrentSkin(9); }},
        {"changeLoginState", [](MAManagerProbe& manager) { manager.changeLoginState(9); }},
        {"changeCurrentUnread", [](MAManagerProbe& manager) { manager.changeCurrentUnread(9); }},
        {"changeCurrentUnreadMark",
         [](MAManagerProbe& manager) {
             manager.changeCurrentUnreadMark(0);
             manager.changeCurrentUnreadMark(1);
         }},
        {"switchLoginState", [](MAManagerProbe& manager) { manager.switchLoginState(9); }},
        {"switchToCurrentPin", [](MAManagerProbe& manager) { manager.switchToCurrentPin(); }},
        {"changeMergeMode", [](MAManagerProbe& manager) { manager.changeMergeMode(0, false); }},
    };
    for (const auto& [name, run] : operations) {
        forget();
        run(b.manager);
        EXPECT_EQ(complaints(), Texts{"ERROR not find window, " + account.title}) << name;
    }
    EXPECT_EQ(a.manager.selected().pin, "b") << "whoever takes the front has it";
}
