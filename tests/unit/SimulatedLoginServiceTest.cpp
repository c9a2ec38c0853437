#include "pavo_core/SimulatedLoginService.h"

#include "pavo_core/QLoginObserver.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Strings = std::vector<std::string>;
using namespace std::chrono_literals;

constexpr auto kDeadline = 30s;

// What happened, in order, from whichever thread.
class Journal
{
public:
    void add(const std::string& entry)
    {
        const std::lock_guard lock(m_mutex);
        m_entries.push_back(entry);
        m_added.notify_all();
    }

    // The entries, once there are at least count of them or the time is over.
    Strings wait(std::size_t count, std::chrono::milliseconds time = kDeadline)
    {
        std::unique_lock lock(m_mutex);
        m_added.wait_for(lock, time, [&] { return m_entries.size() >= count; });
        return m_entries;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_added;
    Strings m_entries;
};

// Writes every callback into the journal, after its name.
class JournalObserver : public QLoginObserver
{
public:
    explicit JournalObserver(Journal& journal, const std::string& name = "")
    {
        onLoginFailure = [&journal, name](const std::string& pin, long long code,
                                          const std::string& message) {
            journal.add(name + "failure " + pin + " " + std::to_string(code) + " " + message);
        };
        onPresenceChanged = [&journal, name](const std::string& pin, int before, int now) {
            journal.add(name + "presence " + pin + " " + std::to_string(before) + " " +
                        std::to_string(now));
        };
    }
};

class SimulatedLoginServiceTest : public testing::Test
{
protected:
    SimulatedLoginServiceTest()
    {
        service.addAccount("ann", "token-a");
        service.addAccount("bob", "token-b");
    }

    void logIn(const std::string& pin, const std::string& token)
    {
        service.hbxTokenLogin(pin, token, "", "", 0, [this](int result, const std::string& text) {
            journal.add("login " + std::to_string(result) + " " + text);
        });
    }

    void switchPresence(int presence)
    {
        service.switchPresence(
            presence, 0, [this](int result) { journal.add("switched " + std::to_string(result)); });
    }

    // Waits until everything asked for so far has been answered.
    Strings entriesWhenIdle()
    {
        std::mutex mutex;
        std::condition_variable condition;
        bool idle = false;
        service.changeCurrentPin("", "", [&](int) {
            const std::lock_guard lock(mutex);
            idle = true;
            condition.notify_all();
        });
        std::unique_lock lock(mutex);
        condition.wait(lock, [&] { return idle; });
        return journal.wait(0);
    }

    Journal journal;
    JournalObserver observer{journal};
    SimulatedLoginService service;
};

} // namespace

TEST_F(SimulatedLoginServiceTest, loginReportsThePresenceThenTheResult)
{
    service.addLoginObserver(&observer);
    logIn("ann", "token-a");
    EXPECT_EQ(journal.wait(2), (Strings{"presence ann 0 1", "login 0 "}));
}

TEST_F(SimulatedLoginServiceTest, wrongLoginsReportAFailure)
{
    service.addLoginObserver(&observer);
    logIn("ann", "token-b");
    logIn("Ann", "token-a");
    logIn("", "");
    EXPECT_EQ(journal.wait(6),
              (Strings{"failure ann 2 The token is wrong.", "login 2 The token is wrong.",
                       "failure Ann 1 The account is unknown.", "login 1 The account is unknown.",
                       "failure  1 The account is unknown.", "login 1 The account is unknown."}));
}

TEST_F(SimulatedLoginServiceTest, presenceIsThatOfTheLastLogin)
{
    service.addLoginObserver(&observer);
    switchPresence(3);
    logIn("ann", "token-a");
    logIn("bob", "token-b");
    switchPresence(5);
    switchPresence(5);
    logIn("bob", "wrong");
    switchPresence(7);
    logIn("bob", "token-b");
    EXPECT_EQ(journal.wait(15),
              (Strings{"switched 3", "presence ann 0 1", "login 0 ", "presence bob 0 1", "login 0 ",
                       "presence bob 1 5", "switched 0", "presence bob 5 5", "switched 0",
                       "failure bob 2 The token is wrong.", "login 2 The token is wrong.",
                       "presence bob 5 7", "switched 0", "presence bob 7 1", "login 0 "}));
}

TEST_F(SimulatedLoginServiceTest, serverReportsReachTheObservers)
{
    service.addLoginObserver(&observer);
    service.reportLoginFailure("ann", 88LL << 32, "kicked out");
    service.reportPresence("text", 3, 7);
    EXPECT_EQ(journal.wait(2),
              (Strings{"failure ann 377957122048 kicked out", "presence text 3 7"}));
}

TEST_F(SimulatedLoginServiceTest, emptyCallbacksAreNotCalled)
{
    QLoginObserver silent;
    service.addLoginObserver(&silent);
    service.hbxTokenLogin("ann", "token-a", "", "", 0, {});
    service.hbxTokenLogin("ann", "wrong", "", "", 0, {});
    service.switchPresence(2, 0, {});
    service.changeCurrentPin("app", "ann", {});
    EXPECT_EQ(entriesWhenIdle(), Strings{});
    service.removeLoginObserver(&silent);
}

TEST_F(SimulatedLoginServiceTest, answersOnOneOtherThreadInOrder)
{
    std::vector<std::thread::id> threads; // touched by the service's thread, then by this one
    std::vector<int> order;
    for (int call = 0; call < 100; ++call) {
        service.changeCurrentPin("app", "ann", [&, call](int) {
            threads.push_back(std::this_thread::get_id());
            order.push_back(call);
        });
    }
    entriesWhenIdle();
    ASSERT_EQ(order.size(), 100U);
    for (int call = 0; call < 100; ++call) {
        EXPECT_EQ(order[static_cast<std::size_t>(call)], call);
        EXPECT_EQ(threads[static_cast<std::size_t>(call)], threads.front());
    }
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST_F(SimulatedLoginServiceTest, registersAnObserverOnce)
{
    JournalObserver second(journal, "second ");
    service.addLoginObserver(nullptr);
    EXPECT_EQ(service.observerCount(), 0U);
    service.addLoginObserver(&observer);
    service.addLoginObserver(&observer);
    EXPECT_EQ(service.observerCount(), 1U);
    service.addLoginObserver(&second);
    EXPECT_EQ(service.observerCount(), 2U);
    service.reportPresence("ann", 0, 1);
    EXPECT_EQ(entriesWhenIdle(), (Strings{"presence ann 0 1", "second presence ann 0 1"}));

    service.removeLoginObserver(nullptr);
    service.removeLoginObserver(&observer);
    service.removeLoginObserver(&observer);
    EXPECT_EQ(service.observerCount(), 1U);
    service.reportPresence("ann", 1, 2);
    EXPECT_EQ(entriesWhenIdle().back(), "second presence ann 1 2");
    EXPECT_EQ(journal.wait(0).size(), 3U);
    service.removeLoginObserver(&second);
}

TEST_F(SimulatedLoginServiceTest, removalWaitsForTheCallbackThatIsRunning)
{
    Journal gate;
    QLoginObserver slow;
    slow.onPresenceChanged = [&](const std::string&, int, int) {
        journal.add("begin");
        gate.wait(1);
        journal.add("end");
    };
    service.addLoginObserver(&slow);
    service.reportPresence("ann", 0, 1);
    service.reportPresence("ann", 1, 2);
    ASSERT_EQ(journal.wait(1), Strings{"begin"});

    std::thread remover([&] {
        service.removeLoginObserver(&slow);
        journal.add("removed");
    });
    // Nothing may come now: that takes a while to see.
    EXPECT_EQ(journal.wait(2, 50ms), Strings{"begin"});
    gate.add("open");
    remover.join();
    EXPECT_EQ(entriesWhenIdle(), (Strings{"begin", "end", "removed"}));
}

TEST_F(SimulatedLoginServiceTest, removalOfAnotherObserverDoesNotWait)
{
    Journal gate;
    QLoginObserver slow;
    slow.onPresenceChanged = [&](const std::string&, int, int) {
        journal.add("begin");
        gate.wait(1);
    };
    service.addLoginObserver(&slow);
    service.addLoginObserver(&observer);
    service.reportPresence("ann", 0, 1);
    ASSERT_EQ(journal.wait(1), Strings{"begin"});
    service.removeLoginObserver(&observer);
    gate.add("open");
    EXPECT_EQ(entriesWhenIdle(), Strings{"begin"});
    service.removeLoginObserver(&slow);
}

TEST_F(SimulatedLoginServiceTest, anObserverMayRemoveAndDestroyItself)
{
    auto* const once = new QLoginObserver;
    once->onPresenceChanged = [this, once](const std::string& pin, int, int) {
        service.removeLoginObserver(once);
        delete once;
        journal.add("once " + pin); // what this callback captured is still there
    };
    service.addLoginObserver(once);
    service.reportPresence("ann", 0, 1);
    service.reportPresence("bob", 0, 1);
    EXPECT_EQ(entriesWhenIdle(), Strings{"once ann"});
    EXPECT_EQ(service.observerCount(), 0U);
}

TEST_F(SimulatedLoginServiceTest, anObserverMayRemoveTheNext)
{
    auto* const next = new JournalObserver(journal, "next ");
    QLoginObserver first;
    first.onPresenceChanged = [&](const std::string&, int, int) {
        journal.add("first");
        service.removeLoginObserver(next);
        delete next;
    };
    service.addLoginObserver(&first);
    service.addLoginObserver(next);
    service.reportPresence("ann", 0, 1);
    EXPECT_EQ(entriesWhenIdle(), Strings{"first"});
    service.removeLoginObserver(&first);
}

TEST_F(SimulatedLoginServiceTest, callbacksMayUseTheService)
{
    QLoginObserver busy;
    busy.onPresenceChanged = [&](const std::string&, int, int now) {
        if (now != SimulatedLoginService::Online)
            return;
        service.addLoginObserver(&observer);
        switchPresence(static_cast<int>(service.observerCount()));
    };
    service.addLoginObserver(&busy);
    logIn("ann", "token-a");
    // The observer that was added while the login was reported hears of the next change first.
    EXPECT_EQ(journal.wait(3), (Strings{"login 0 ", "presence ann 1 2", "switched 0"}));
    service.removeLoginObserver(&busy);
}

TEST_F(SimulatedLoginServiceTest, whatACallbackCapturedMayUseTheServiceOnItsWayOut)
{
    std::shared_ptr<void> leaver(
        nullptr, [this](void*) { journal.add("left " + std::to_string(service.observerCount())); });
    auto* const once = new QLoginObserver;
    once->onPresenceChanged = [this, once, leaver = std::move(leaver)](const std::string&, int,
                                                                       int) {
        service.removeLoginObserver(once);
        delete once;
    };
    service.addLoginObserver(once);
    service.reportPresence("ann", 0, 1);
    EXPECT_EQ(entriesWhenIdle(), Strings{"left 0"});
}

TEST_F(SimulatedLoginServiceTest, observersComeAndGoWhileReportsArrive)
{
    std::atomic<bool> done = false;
    std::thread reporter([&] {
        while (!done) {
            service.reportPresence("ann", 0, 1);
            entriesWhenIdle();
        }
    });
    std::atomic<int> callsAfterRemoval = 0;
    std::atomic<int> calls = 0;
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                bool registered = true; // no atomic: removal itself has to order the accesses
                QLoginObserver passing;
                passing.onPresenceChanged = [&](const std::string&, int, int) {
                    ++(registered ? calls : callsAfterRemoval);
                };
                service.addLoginObserver(&passing);
                if (round % 50 == 0)
                    entriesWhenIdle();
                service.removeLoginObserver(&passing);
                registered = false;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    done = true;
    reporter.join();
    EXPECT_EQ(service.observerCount(), 0U);
    EXPECT_EQ(callsAfterRemoval, 0);
}

TEST(SimulatedLoginServiceDestruction, waitsForTheCallbackThatIsRunning)
{
    Journal journal;
    Journal gate;
    bool ended = false; // no atomic: destruction itself has to order the accesses
    {
        SimulatedLoginService service;
        service.changeCurrentPin("app", "ann", [&](int) {
            journal.add("begin");
            gate.wait(1);
            ended = true;
        });
        ASSERT_EQ(journal.wait(1), Strings{"begin"});
        gate.add("open");
    }
    EXPECT_TRUE(ended);
}

TEST(SimulatedLoginServiceDestruction, dropsWhatIsStillDue)
{
    Journal journal;
    std::function<void(int)> askAgain;
    {
        SimulatedLoginService service;
        askAgain = [&](int) {
            service.changeCurrentPin("app", "ann", askAgain);
            journal.add("answer");
        };
        service.changeCurrentPin("app", "ann", askAgain);
        journal.wait(10);
    } // comes back although there is always an answer due
    EXPECT_GE(journal.wait(0).size(), 10U);
}
