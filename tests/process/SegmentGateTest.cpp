#include "platform/SegmentGatePassage.h"
#include "tests/process/SegmentGateMember.h"
#include "tests/support/Stress.h"
#include "tests/support/Wait.h"

#include <QSystemSemaphore>

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <thread>

// Members that come, go and work at the same time, all of them in good health.

namespace {

bool segmentExists(const QString& key)
{
    QSharedMemory memory(key);
    pavo::SegmentGate gate(memory);
    const bool exists = memory.attach();
    gate.detach();
    return exists;
}

// Asks all at once.
void expectAll(std::deque<MemberProcess>& members, const std::string& command)
{
    for (auto& member : members)
        member.tell(command);
    for (auto& member : members)
        EXPECT_EQ(member.answer(), "ok") << command;
}

} // namespace

TEST(SegmentGateTest, FirstMakesTheSegmentAndLastRemovesIt)
{
    const UniqueKey key;
    {
        Member first(key, 0, true);
        EXPECT_TRUE(first.attach());
        EXPECT_TRUE(first.attach());
        EXPECT_GE(first.memory().size(), kSegmentSize);
        EXPECT_TRUE(first.boardIsZero());
        EXPECT_TRUE(first.visit());
        Member second(key, 1, true);
        EXPECT_TRUE(second.attach());
        EXPECT_TRUE(second.visit());
        first.detach();
        EXPECT_TRUE(second.visit());
        EXPECT_EQ(second.board().total, 3);
        EXPECT_EQ(lockValue(key), 1);
    }
    EXPECT_FALSE(segmentExists(key));
    EXPECT_EQ(lockValue(key), -1);
}

TEST(SegmentGateTest, OnlyTheOutermostSpanOfAThreadCounts)
{
    const UniqueKey key;
    std::atomic<bool> isOtherIn{false};
    std::thread other;
    {
        QSharedMemory memory(key);
        pavo::SegmentGate outer(memory);
        EXPECT_EQ(outer.problem(), QString());
        {
            pavo::SegmentGate inner(memory);
            EXPECT_EQ(inner.problem(), QString());
            EXPECT_EQ(inner.attach(kSegmentSize), QSharedMemory::NoError);
        }
        other = std::thread([&] {
            QSharedMemory same(key);
            const pavo::SegmentGate gate(same);
            isOtherIn = true;
        });
        for (int i = 0; i < 1000; ++i) {
            const pavo::SegmentGate inner(memory);
            EXPECT_TRUE(memory.lock());
            EXPECT_TRUE(memory.unlock());
        }
        EXPECT_FALSE(isOtherIn);
        outer.detach();
    }
    other.join();
    EXPECT_TRUE(isOtherIn);
}

TEST(SegmentGateTest, NoKeyIsAProblemAndNoMore)
{
    QSharedMemory memory;
    pavo::SegmentGate gate(memory);
    EXPECT_NE(gate.problem(), QString());
    EXPECT_EQ(gate.attach(kSegmentSize), QSharedMemory::KeyError);
    gate.detach();
}

TEST(SegmentGateTest, FailureToAttachLeavesNothingBehind)
{
    const UniqueKey key;
    auto failing = std::make_unique<QSharedMemory>(key);
    EXPECT_EQ(pavo::SegmentGate(*failing).attach(0), QSharedMemory::InvalidSize);
    EXPECT_EQ(lockValue(key), -1);
    const Observer observer(key);
    failing.reset();
    EXPECT_EQ(lockValue(key), 1);
}

TEST(SegmentGateTest, LockThatCannotBeLookedAtIsNotTakenForAnAbsentOne)
{
    const UniqueKey key;
    {
        const auto obstacle = blockLock(key);
        const auto finding = pavo::SegmentGate::lookAtLock(key, 0);
        EXPECT_EQ(finding.state, pavo::SegmentGate::LockState::Unusable);
        const QString lock = pavo::segmentLockName(QSharedMemory(key).nativeKey());
        EXPECT_TRUE(finding.problem.contains(lock)) << finding.problem.toStdString();
    }
    EXPECT_EQ(pavo::SegmentGate::lookAtLock(key, 0).state, pavo::SegmentGate::LockState::Absent);
}

TEST(SegmentGateTest, LockThatCouldBeTakenTwiceIsMendedOnceNoPlainUserHasIt)
{
    const UniqueKey key;
    Member plain(key, 0, false);
    EXPECT_TRUE(plain.attach());
    AttachedProcess member(key, 1);
    EXPECT_TRUE(plain.memory().lock());
    EXPECT_TRUE(QSystemSemaphore(key, 1).release(2));
    EXPECT_EQ(member.ask("visit 1"), "ok");
    EXPECT_EQ(lockValue(key), 1) << "and the one that the plain user has";
    EXPECT_TRUE(plain.memory().unlock());
    EXPECT_EQ(lockValue(key), 2);
    EXPECT_EQ(member.ask("visit 1"), "ok");
    EXPECT_EQ(lockValue(key), 1);
}

TEST(SegmentGateTest, GatesOfDifferentSegmentsAreIndependent)
{
    const UniqueKey oneKey;
    const UniqueKey otherKey;
    QSharedMemory one(oneKey);
    const pavo::SegmentGate gate(one);
    std::thread([&otherKey] {
        QSharedMemory other(otherKey);
        EXPECT_EQ(pavo::SegmentGate(other).problem(), QString());
    }).join();
}

TEST(SegmentGateTest, ThreadsTakeTurnsLikeProcesses)
{
    constexpr int kVisits = 2000;
    const UniqueKey key;
    Observer observer(key);
    std::deque<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([&key, number] {
            Member member(key, number, true);
            EXPECT_TRUE(member.attach());
            for (int i = 0; i < kVisits; ++i)
                EXPECT_TRUE(member.visit());
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(observer.board().total, 4 * kVisits);
}

TEST(SegmentGateTest, AllThatStartTogetherShareOneSegmentAndAllThatQuitTogetherRemoveIt)
{
    const UniqueKey key;
    std::deque<MemberProcess> members;
    for (int number = 0; number < kFirstVictim; ++number)
        members.emplace_back(key, number);
    const int rounds = stressed(20);
    for (int round = 0; round < rounds; ++round) {
        SCOPED_TRACE(round);
        expectAll(members, "attach");
        expectAll(members, "visit 10");
        {
            Observer observer(key);
            ASSERT_EQ(observer.board().total, kFirstVictim * 10);
            ASSERT_EQ(lockValue(key), 1);
        }
        expectAll(members, "detach");
        ASSERT_FALSE(segmentExists(key));
        ASSERT_EQ(lockValue(key), -1);
    }
}

TEST(SegmentGateTest, CreatorThatComesAndGoesDisturbsNobody)
{
    const UniqueKey key;
    AttachedProcess creator(key, 0);
    std::deque<MemberProcess> others;
    others.emplace_back(key, 1);
    others.emplace_back(key, 2);
    expectAll(others, "attach");
    for (auto& other : others)
        other.tell("roam");
    EXPECT_EQ(creator.ask("rejoin 200"), "ok");
    int visits = 200;
    for (auto& other : others)
        visits += std::stoi(other.ask("end"));
    const Observer observer(key);
    EXPECT_EQ(observer.board().total, visits);
    EXPECT_EQ(lockValue(key), 1);
}

TEST(SegmentGateTest, PlainUsersTakePart)
{
    constexpr int kVisits = 500;
    for (const bool isCreatorPlain : {false, true}) {
        SCOPED_TRACE(isCreatorPlain);
        const UniqueKey key;
        std::deque<MemberProcess> members;
        for (int number = 0; number < 4; ++number) {
            members.emplace_back(key, number, (number % 2 == 0) != isCreatorPlain);
            EXPECT_EQ(members.back().ask("attach"), "ok");
        }
        expectAll(members, "visit " + std::to_string(kVisits));
        const Observer observer(key);
        EXPECT_EQ(observer.board().total, 4 * kVisits);
        EXPECT_EQ(lockValue(key), 1);
    }
}

TEST(SegmentGateTest, PlainUserThatIsInsideWhenTheGateIsEnteredIsWaitedFor)
{
    const UniqueKey key;
    Member plain(key, 0, false);
    EXPECT_TRUE(plain.attach());
    AttachedProcess gated(key, 1);
    EXPECT_TRUE(plain.memory().lock());
    gated.tell("visit 1");
    EXPECT_TRUE(waitUntil([&key] { return isLockAwaited(key); }));
    EXPECT_EQ(plain.board().total, 0);
    EXPECT_TRUE(plain.memory().unlock());
    EXPECT_EQ(gated.answer(), "ok");
    EXPECT_EQ(plain.board().total, 1);
}
