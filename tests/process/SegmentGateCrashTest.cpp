#include "tests/process/SegmentGateMember.h"
#include "tests/support/Stress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <random>
#include <sstream>
#include <thread>

// Members that are killed wherever it hurts, and the others.

namespace {

// The longest that a member may be held up by another one's death; a sanitizer slows down all.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kLongestDelayMs = 30000;
#else
constexpr int kLongestDelayMs = 5000;
#endif

// Lets a victim get somewhere in what it does: where it is killed is left to chance.
void passSomeTime()
{
    static std::mt19937 random(std::random_device{}());
    std::this_thread::sleep_for(
        std::chrono::microseconds(std::uniform_int_distribution<>(0, 5000)(random)));
}

// Two members that visit all the time, and are stopped by nothing and nobody.
class Survivors
{
public:
    explicit Survivors(const QString& key)
        : m_observer(key)
    {
        for (int number = 0; number < 2; ++number) {
            m_members.emplace_back(key, number);
            m_members.back().tell("roam");
        }
    }
    void expectUnhindered()
    {
        int visits = 0;
        for (auto& member : m_members) {
            const std::string answer = member.ask("end");
            std::istringstream words(answer);
            int own = 0;
            int longest = kLongestDelayMs;
            EXPECT_TRUE(words >> own >> longest) << answer;
            EXPECT_LT(longest, kLongestDelayMs);
            visits += own;
        }
        EXPECT_EQ(m_observer.board().total, visits);
    }

private:
    Observer m_observer;
    std::deque<AttachedProcess> m_members;
};

class SegmentGateStopTest : public testing::TestWithParam<const char*>
{
};

} // namespace

TEST(SegmentGateCrashTest, NextOneFindsAnEmptySegmentWhenAllAreKilled)
{
    const UniqueKey key;
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        std::deque<AttachedProcess> members;
        for (int number = 0; number < 2; ++number) {
            members.emplace_back(key, number);
            EXPECT_EQ(members.back().ask("visit 10"), "ok");
        }
        for (auto& member : members)
            member.kill();
        const Observer observer(key);
        EXPECT_TRUE(observer.boardIsZero());
        EXPECT_EQ(lockValue(key), 1);
    }
}

TEST_P(SegmentGateStopTest, HindersNobodyWhenItIsKilled)
{
    const UniqueKey key;
    Survivors survivors(key);
    const int kills = stressed(1);
    for (int i = 0; i < kills; ++i) {
        AttachedProcess victim(key, kFirstVictim);
        EXPECT_EQ(victim.ask(std::string("stop ") + GetParam()), "ok");
        victim.kill();
    }
    survivors.expectUnhindered();
    const Observer observer(key);
    EXPECT_EQ(lockValue(key), 1);
}

INSTANTIATE_TEST_SUITE_P(Places, SegmentGateStopTest, testing::Values("gate", "lock", "unlocked"));

TEST(SegmentGateCrashTest, SurvivorsGoOnWhereverTheOthersAreKilled)
{
    const UniqueKey key;
    Survivors survivors(key);
    const int kills = stressed(2);
    for (int i = 0; i < kills; ++i) {
        AttachedProcess victim(key, kFirstVictim);
        victim.tell("rejoin 1000000");
        passSomeTime();
        victim.kill();
    }
    survivors.expectUnhindered();
    EXPECT_EQ(lockValue(key), 1);
}

TEST(SegmentGateCrashTest, CreatorMayBeKilledAnywhere)
{
    const UniqueKey key;
    const int kills = stressed(2);
    for (int i = 0; i < kills; ++i) {
        SCOPED_TRACE(i);
        AttachedProcess victim(key, kFirstVictim);
        victim.tell("rejoin 1000000");
        passSomeTime();
        victim.kill();
        Observer observer(key);
        ASSERT_TRUE(observer.boardIsZero());
        ASSERT_TRUE(observer.visit());
        ASSERT_EQ(lockValue(key), 1);
    }
}

TEST(SegmentGateCrashTest, OneIsInsideAtATimeWhileOthersStartQuitAndCrash)
{
    const UniqueKey key;
    std::deque<MemberProcess> members;
    for (int number = 0; number < kFirstVictim - 1; ++number)
        members.emplace_back(key, number);
    const int rounds = stressed(2);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        AttachedProcess victim(key, kFirstVictim);
        victim.tell("rejoin 1000000");
        for (auto& member : members)
            member.tell("rejoin 10");
        passSomeTime();
        victim.kill();
        for (auto& member : members)
            ASSERT_EQ(member.answer(), "ok");
        for (auto& member : members)
            member.tell("detach");
        for (auto& member : members)
            ASSERT_EQ(member.answer(), "ok");
        const Observer observer(key);
        ASSERT_TRUE(observer.boardIsZero());
        ASSERT_EQ(lockValue(key), 1);
    }
}
