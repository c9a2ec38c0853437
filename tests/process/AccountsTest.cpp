// Workbench processes of one installation, as many as one likes: this executable is all of them.

#include "pavo_base/TimeCorrector.h"
#include "tests/support/AccountsFixture.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Stress.h"
#include "tests/support/Wait.h"

#include <QElapsedTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <thread>

namespace {

/// How long a process may have to wait for others that died.
constexpr int kRecoveryMs = 5000;

/// One account's process, on the command of the test.
class Account
{
public:
    Account(const QStringList& arguments)
        : m_pin(arguments[1].toStdString())
    {
        QCoreApplication::setApplicationName(arguments[0]);
    }

    int run()
    {
        std::string line;
        sayToParent("ready");
        while (!(line = nextLineFromParent()).empty()) {
            std::istringstream words(line);
            std::string command;
            int number = 0;
            words >> command >> number;
            if (command == "join")
                sayToParent(m_manager.join(m_pin) ? "joined" : "refused");
            else if (command == "quit")
                sayToParent(std::to_string(m_manager.quitCurrentAccount()));
            else if (command == "add")
                sayToParent(add(number));
            else if (command == "come-and-go")
                sayToParent(comeAndGo(number));
            else if (command == "churn")
                churn();
            else if (command == "hold")
                hold(number);
            else if (command == "lock")
                lockWithoutGate();
        }
        return 0;
    }

private:
    /// Changes the own entry under the lock. While this goes on, the segment's spare bytes are this
    /// process's alone.
    template<typename Edit>
    bool change(Edit edit)
    {
        MASelectedAccount selected;
        std::list<MAAccountInfo> list;
        bool isAlone = false;
        m_manager.modify(selected, list, nullptr, [&](std::list<MAAccountInfo>& accounts) {
            auto* const spare = static_cast<char*>(m_manager.memory().data()) +
                                kMAListRegion.offset + kMAListRegion.size;
            const std::string mine = m_pin.substr(0, 10);
            mine.copy(spare, mine.size());
            for (MAAccountInfo& account : accounts) {
                if (account.pin == m_pin)
                    edit(account);
            }
            std::this_thread::yield();
            isAlone = std::string(spare, mine.size()) == mine;
        });
        return isAlone;
    }

    std::string add(int count)
    {
        const LogRecorder log;
        std::size_t slow = 0;
        int value = -1;
        for (int i = 0; i < count; ++i) {
            const auto start = TimeCorrector::tickCount();
            if (!change([&](MAAccountInfo& account) { value = ++account.unread; }))
                return "not alone";
            if (TimeCorrector::tickCount() - start > 200)
                ++slow;
        }
        return log.complaints().size() <= slow ? std::to_string(value) : log.complaints().front();
    }

    std::string comeAndGo(int count)
    {
        for (int i = 0; i < count; ++i) {
            if (!m_manager.join(m_pin) || m_manager.quitCurrentAccount() != 1)
                return "failed in round " + std::to_string(i);
        }
        return "done";
    }

    /// Works and comes and goes until it is killed, saying when it works. Its entry keeps its
    /// length: a process that dies in the middle of a text leaves half of each.
    void churn()
    {
        for (;;) {
            sayToParent(m_manager.join(m_pin) ? "working" : "refused");
            for (int i = 0; i < 20; ++i)
                change([](MAAccountInfo& account) { account.loginState ^= 1; });
            m_manager.uninit();
        }
    }

    /// Stays in the lock until it is killed: before reading, or before writing either region.
    void hold(int point)
    {
        const auto stay = [] {
            sayToParent("holding");
            nextLineFromParent();
        };
        MASelectedAccount selected;
        std::list<MAAccountInfo> list;
        if (point == 0) {
            const MAMutex lock(&m_manager.memory());
            stay();
        } else if (point == 1) {
            m_manager.modify(
                selected, list, [&](MASelectedAccount&) { stay(); }, nullptr);
        } else {
            m_manager.modify(selected, list, nullptr, [&](std::list<MAAccountInfo>&) { stay(); });
        }
    }

    /// As a program that knows the segment and its lock, but no gate.
    void lockWithoutGate()
    {
        QSharedMemory plain(QCoreApplication::applicationName() + QStringLiteral("_MEM"));
        if (!plain.attach() || !plain.lock()) {
            sayToParent("failed");
            return;
        }
        sayToParent("locked");
        nextLineFromParent();
        plain.unlock();
        sayToParent("unlocked");
    }

    std::string m_pin;
    MAManagerProbe m_manager;
};

const Role kAccountRole("account",
                        [](const QStringList& arguments) { return Account(arguments).run(); });

/// Ends in the middle of it all, as a process does whose main() returns.
const Role kLeavingRole("leave-without-quitting", [](const QStringList& arguments) {
    QCoreApplication::setApplicationName(arguments[0]);
    MAManager::Instance()->addObserver(new MAObserver);
    sayToParent(MAManager::Instance()->initManager("app", "pin", "c", "t", 1) ? "joined"
                                                                              : "refused");
    nextLineFromParent();
    return 0;
});

class AccountsTest : public AccountsFixture
{
protected:
    using Process = std::unique_ptr<RoleProcess>;

    Process start(const QString& pin)
    {
        return std::make_unique<RoleProcess>("account",
                                             QStringList{QCoreApplication::applicationName(), pin});
    }

    /// Started and at its first command.
    std::vector<Process> startAll(int count)
    {
        std::vector<Process> processes;
        processes.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            processes.push_back(start(QStringLiteral("account-%1").arg(i)));
        for (const Process& process : processes)
            EXPECT_EQ(process->nextLine(), "ready");
        return processes;
    }

    Process joined(const QString& pin)
    {
        Process process = start(pin);
        EXPECT_EQ(process->nextLine(), "ready");
        EXPECT_EQ(ask(process, "join"), "joined");
        return process;
    }

    static std::string ask(const Process& process, const std::string& command)
    {
        process->say(command);
        return process->nextLine();
    }

    static void end(const Process& process)
    {
        process->say("");
        EXPECT_EQ(process->waitForExit(), 0);
    }

    /// All of them at once.
    static void askAll(const std::vector<Process>& processes, const std::string& command,
                       const std::string& expected, int deadlineMs = kDeadlineMs)
    {
        for (const Process& process : processes)
            process->say(command);
        for (const Process& process : processes)
            EXPECT_EQ(process->nextLine(deadlineMs), expected);
    }

    std::list<MAAccountInfo> stored()
    {
        const MAMutex lock(view());
        std::list<MAAccountInfo> list;
        const std::string text = bytes(kMAListRegion.offset, kMAListRegion.size);
        const bool isList = MAAccountInfo::parseJSON(text.data(), kMAListRegion.size, list);
        EXPECT_TRUE(isList || text.substr(0, text.find('\0')) == "null") << text;
        return list;
    }

    MASelectedAccount storedSelected()
    {
        const MAMutex lock(view());
        MASelectedAccount selected;
        EXPECT_TRUE(
            selected.parseJSON(bytes(0, kMASelectedRegion.size).data(), kMASelectedRegion.size));
        return selected;
    }

    int unreadOf(const std::string& pin)
    {
        for (const MAAccountInfo& account : stored()) {
            if (account.pin == pin)
                return account.unread;
        }
        return -1;
    }

    /// The lock can be had, once.
    void expectOneLock()
    {
        const Process first = start(QStringLiteral("first"));
        const Process second = start(QStringLiteral("second"));
        EXPECT_EQ(first->nextLine(), "ready");
        EXPECT_EQ(second->nextLine(), "ready");
        ASSERT_EQ(ask(first, "lock"), "locked");
        second->say("lock");
        // Time for the other one to get it, if it could.
        EXPECT_EQ(second->nextLine(100), "");
        first->say("unlock");
        EXPECT_EQ(first->nextLine(), "unlocked");
        EXPECT_EQ(second->nextLine(), "locked");
        EXPECT_EQ(ask(second, "unlock"), "unlocked");
        // They detach now, with the lock: without a gate, nobody could take it from the dead.
        end(first);
        end(second);
    }

    std::mt19937 random{20240229};
};

} // namespace

TEST_F(AccountsTest, CrowdJoinsAtOnceAndLeavesInAnyOrder)
{
    constexpr int kCrowd = 50;
    std::vector<Process> processes = startAll(kCrowd);
    const int rounds = stressed(10);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        askAll(processes, "join", "joined");
        const std::list<MAAccountInfo> accounts = stored();
        ASSERT_EQ(accounts.size(), static_cast<std::size_t>(kCrowd));
        std::set<std::string> pins;
        int position = 0;
        for (const MAAccountInfo& account : accounts) {
            pins.insert(account.pin);
            const bool isLast = position == kCrowd - 1;
            EXPECT_EQ(account.idx, isLast ? kCrowd : position);
            ++position;
        }
        EXPECT_EQ(pins.size(), accounts.size());
        EXPECT_EQ(storedSelected().pin, accounts.front().pin);

        std::shuffle(processes.begin(), processes.end(), random);
        askAll(processes, "quit", "1");
        EXPECT_TRUE(stored().empty());
        leave();
    }
    for (const Process& process : processes)
        end(process);
}

TEST_F(AccountsTest, NoChangeIsLostUnderContention)
{
    constexpr int kProcesses = 8;
    constexpr int kChanges = 5000;
    const std::vector<Process> processes = startAll(kProcesses);
    askAll(processes, "join", "joined");
    askAll(processes, "add " + std::to_string(kChanges), std::to_string(kChanges),
           10 * kDeadlineMs);
    for (int i = 0; i < kProcesses; ++i)
        EXPECT_EQ(unreadOf("account-" + std::to_string(i)), kChanges);
}

TEST_F(AccountsTest, ComingAndGoingDisturbsNobody)
{
    const Process creator = start(QStringLiteral("creator"));
    EXPECT_EQ(creator->nextLine(), "ready");
    EXPECT_EQ(ask(creator, "join"), "joined");
    const Process one = joined(QStringLiteral("one"));
    const Process two = joined(QStringLiteral("two"));
    EXPECT_EQ(ask(creator, "quit"), "1");
    const int times = 200;
    creator->say("come-and-go " + std::to_string(times));
    one->say("add 2000");
    two->say("add 2000");
    EXPECT_EQ(creator->nextLine(), "done");
    EXPECT_EQ(one->nextLine(), "2000");
    EXPECT_EQ(two->nextLine(), "2000");
    EXPECT_EQ(order(stored()).find("creator"), std::string::npos);
    EXPECT_EQ(unreadOf("one"), 2000);
    EXPECT_EQ(unreadOf("two"), 2000);
}

TEST_F(AccountsTest, ProcessKilledInTheLockStopsNobody)
{
    const Process survivor = joined(QStringLiteral("survivor"));
    const int rounds = stressed(12);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        const Process victim = joined(QStringLiteral("victim"));
        ASSERT_EQ(ask(victim, "hold " + std::to_string(round % 3)), "holding");
        survivor->say("add 1");
        victim->kill();
        QElapsedTimer waited;
        waited.start();
        ASSERT_EQ(survivor->nextLine(), std::to_string(round + 1));
        EXPECT_LT(waited.elapsed(), kRecoveryMs);
        EXPECT_EQ(stored().size(), 2U);
    }
    EXPECT_EQ(storedSelected().pin, "survivor");
    expectOneLock();
}

TEST_F(AccountsTest, ProcessesKilledAtAnyMomentStopNobody)
{
    const Process survivors[] = {joined(QStringLiteral("one")), joined(QStringLiteral("two"))};
    const int rounds = stressed(20);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        std::vector<Process> victims;
        for (const char* pin : {"victim-1", "victim-2"}) {
            victims.push_back(start(QString::fromLatin1(pin)));
            EXPECT_EQ(victims.back()->nextLine(), "ready");
            victims.back()->say("churn");
        }
        for (const Process& victim : victims)
            ASSERT_EQ(victim->nextLine(), "working");
        for (const Process& survivor : survivors)
            survivor->say("add 50");
        // Any moment will do: there is nothing to wait for.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 10000));
        for (const Process& victim : victims)
            victim->kill();
        QElapsedTimer waited;
        waited.start();
        for (const Process& survivor : survivors)
            ASSERT_EQ(survivor->nextLine(), std::to_string(50 * (round + 1)));
        EXPECT_LT(waited.elapsed(), kRecoveryMs);
        ASSERT_EQ(stored().size(), 4U) << order(stored());
    }
    EXPECT_EQ(storedSelected().pin, "one");
    expectOneLock();
}

TEST_F(AccountsTest, WhatCrashedProcessesLeaveIsGoneForTheNextOne)
{
    for (int round = 0; round < 5; ++round) {
        std::vector<Process> victims = startAll(3);
        askAll(victims, "join", "joined");
        for (const Process& victim : victims)
            victim->kill();
        const Process next = joined(QStringLiteral("next"));
        EXPECT_EQ(order(stored()), "next:1");
        EXPECT_EQ(storedSelected().pin, "next");
        EXPECT_EQ(ask(next, "quit"), "1");
        leave();
    }
}

TEST_F(AccountsTest, ProcessThatEndsWithoutQuittingDetaches)
{
    RoleProcess process("leave-without-quitting", {QCoreApplication::applicationName()});
    ASSERT_EQ(process.nextLine(), "joined");
    EXPECT_EQ(order(stored()), "pin:1");
    process.say("leave");
    EXPECT_EQ(process.waitForExit(), 0);
    EXPECT_EQ(order(stored()), "pin:1") << "its record stays";
    leave();
    EXPECT_FALSE(
        QSharedMemory(QCoreApplication::applicationName() + QStringLiteral("_MEM")).attach())
        << "the last one takes the segment along";
}

TEST_F(AccountsTest, RecordOfACrashedProcessStaysWhileOthersLive)
{
    const Process survivor = joined(QStringLiteral("survivor"));
    joined(QStringLiteral("victim"))->kill();
    EXPECT_EQ(order(stored()), "survivor:0 victim:2");
    const Process again = joined(QStringLiteral("victim"));
    EXPECT_EQ(order(stored()), "survivor:0 victim:1");
}
