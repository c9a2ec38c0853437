// Workbenches that switch to one another as fast as they can, while others come, quit and crash.

#include "tests/model/StoredState.h"
#include "tests/support/Stress.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>

#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <set>

namespace {

constexpr int kSwitches = 10000;
constexpr int kProcesses = 8;
/// Accounts, of which some are not there. One digit each, as a process that dies while it writes a
/// text leaves half of each: all texts have one length.
constexpr int kAccounts = 10;
constexpr int kSwitchesAtOnce = 25;
constexpr int kPatientMs = 10 * kDeadlineMs;

std::string key(const WorkbenchIdentity& id)
{
    return id.appID + ',' + id.pin + ',' + id.className + ',' + id.title;
}

class SwitchesTest : public testing::Test
{
protected:
    SwitchesTest()
    {
        QCoreApplication::setApplicationName(
            QStringLiteral("pavo-switches-%1").arg(QCoreApplication::applicationPid()));
    }

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    /// Of `numbers`, which must not be empty.
    template<typename Numbers>
    int anyOf(const Numbers& numbers)
    {
        return *std::next(numbers.begin(), below(static_cast<int>(numbers.size())));
    }

    std::vector<int> livingNumbers() const
    {
        std::vector<int> numbers;
        for (const auto& [number, process] : m_living)
            numbers.push_back(number);
        return numbers;
    }

    /// An account that is not there, crashed or not.
    int absentNumber()
    {
        std::vector<int> absent;
        for (int i = 0; i < kAccounts; ++i) {
            if (m_living.count(i) == 0)
                absent.push_back(i);
        }
        return anyOf(absent);
    }

    std::string rush(int count) { return commandLine("rush", {count, below(1000), kAccounts}); }

    void add()
    {
        const int number = absentNumber();
        auto process = std::make_unique<WorkbenchProcess>(number);
        ASSERT_EQ(process->reply(), std::vector<std::string>{"ready"});
        ASSERT_EQ(process->ask("initManager 1").at(0), "1");
        m_living[number] = std::move(process);
        m_crashed.erase(number);
    }

    /// Has all but `victim` switch; whatever `meanwhile` does, it does in the middle of it.
    template<typename Meanwhile>
    void rushBut(int victim, Meanwhile meanwhile)
    {
        const std::vector<int> numbers = livingNumbers();
        for (const int number : numbers) {
            if (number != victim)
                m_living.at(number)->say(rush(kSwitchesAtOnce));
        }
        meanwhile();
        for (const int number : numbers) {
            if (number == victim)
                continue;
            const std::vector<std::string> reply = m_living.at(number)->reply(kPatientMs);
            ASSERT_EQ(reply.size(), 1U) << number;
            m_switches += std::stoi(reply.front());
        }
    }

    void crashOne()
    {
        const int victim = anyOf(livingNumbers());
        // More than it can get done.
        m_living.at(victim)->say(rush(10000 * kSwitchesAtOnce));
        rushBut(victim, [] {});
        m_living.erase(victim);
        m_crashed.insert(victim);
    }

    void quitOne()
    {
        const int victim = anyOf(livingNumbers());
        rushBut(victim, [&] {
            ASSERT_EQ(m_living.at(victim)->ask("quitCurrentAccount").at(0), "1");
            ASSERT_EQ(m_living.at(victim)->end(), 0);
        });
        m_living.erase(victim);
    }

    void removeCrashed()
    {
        rushBut(-1, [&] {
            const int number = anyOf(m_crashed);
            const WorkbenchIdentity id = workbenchIdentity(number);
            const int exitCode = QProcess::execute(
                siblingExecutable(QStringLiteral("pavo-accounts")),
                {QStringLiteral("--application"), QCoreApplication::applicationName(),
                 QStringLiteral("remove"), QString::fromStdString(id.appID),
                 QString::fromStdString(id.pin)});
            ASSERT_EQ(exitCode, 0) << number;
            m_crashed.erase(number);
        });
    }

    void expectAccounts()
    {
        std::multiset<std::string> expected;
        for (const auto& [number, process] : m_living)
            expected.insert(key(workbenchIdentity(number)));
        for (const int number : m_crashed)
            expected.insert(key(workbenchIdentity(number)));
        const std::optional<StoredState> state = storedState();
        ASSERT_TRUE(state);
        std::multiset<std::string> stored;
        for (const AccountsModel::Account& account : state->accounts)
            stored.insert(key(account));
        ASSERT_EQ(stored, expected);
    }

    /// Has all mail handled that there is.
    void settle()
    {
        for (std::size_t heard = 1; heard > 0;) {
            heard = 0;
            for (const auto& [number, process] : m_living)
                process->say("deliver");
            for (const auto& [number, process] : m_living) {
                const std::vector<std::string> reply = process->reply();
                ASSERT_FALSE(reply.empty());
                heard += reply.size() - 1;
            }
        }
    }

    /// Whoever came to the front last: it may have quit or crashed since.
    void expectOneSelected()
    {
        std::set<std::string> accounts;
        for (int number = 0; number < kAccounts; ++number)
            accounts.insert(key(workbenchIdentity(number)));
        const std::optional<StoredState> state = storedState();
        ASSERT_TRUE(state);
        EXPECT_EQ(accounts.count(key(state->selected)), 1U) << key(state->selected);
        EXPECT_EQ(state->selected.mode, 1);
    }

    void expectInFront(int front)
    {
        const std::optional<StoredState> state = storedState();
        ASSERT_TRUE(state);
        EXPECT_EQ(key(state->selected), key(workbenchIdentity(front)));
        EXPECT_EQ(state->selected.mode, 1);
        for (const auto& [number, process] : m_living)
            EXPECT_EQ(process->ask("isSelectedAccount").at(0), number == front ? "1" : "0");
    }

    std::map<int, std::unique_ptr<WorkbenchProcess>> m_living;
    std::set<int> m_crashed; ///< and still listed
    int m_switches = 0;      ///< that brought an account to the front

private:
    std::mt19937 m_random{20240301};
};

} // namespace

TEST_F(SwitchesTest, NoAccountIsLost)
{
    int crashes = 0;
    int quits = 0;
    int removals = 0;
    while (m_switches < stressed(kSwitches) && !HasFatalFailure()) {
        while (static_cast<int>(m_living.size()) < kProcesses - 1)
            add();
        rushBut(-1, [this] { add(); });
        expectAccounts();
        crashOne();
        ++crashes;
        expectAccounts();
        quitOne();
        ++quits;
        expectAccounts();
        if (crashes % 2 == 0) {
            removeCrashed();
            ++removals;
            expectAccounts();
        }
    }
    std::cout << m_switches << " switches, " << crashes << " crashes, " << quits << " quits, "
              << removals << " removals" << std::endl;
    EXPECT_GT(removals, 0);

    settle();
    expectAccounts();
    expectOneSelected();
    const std::vector<int> numbers = livingNumbers();
    const int front = numbers.back();
    m_living.at(numbers.front())->ask(commandLine("switchToAccount", {front}));
    settle();
    expectInFront(front);
    for (const auto& [number, process] : m_living)
        EXPECT_EQ(process->end(), 0);
}
