#include "platform/SegmentGatePassage.h"
#include "platform/UniqueHandle.h"
#include "tests/process/SegmentGateMember.h"

#include <gtest/gtest.h>

// What only named objects make possible.

TEST(SegmentGateWindowsTest, NameThatIsTakenLeavesAPlainSegment)
{
    const UniqueKey key;
    const QString name = pavo::segmentGateName(QSharedMemory(key).nativeKey());
    const pavo::UniqueHandle obstacle(
        CreateEventW(nullptr, FALSE, FALSE, reinterpret_cast<LPCWSTR>(name.utf16())));
    ASSERT_TRUE(obstacle);
    QSharedMemory memory(key);
    pavo::SegmentGate gate(memory);
    EXPECT_TRUE(gate.problem().contains(name));
    EXPECT_EQ(gate.attach(kSegmentSize), QSharedMemory::NoError);
    EXPECT_TRUE(memory.lock());
    EXPECT_TRUE(memory.unlock());
    const auto finding = pavo::SegmentGate::lookAtLock(key, 0);
    EXPECT_EQ(finding.state, pavo::SegmentGate::LockState::Unusable);
    EXPECT_TRUE(finding.problem.contains(name));
    gate.detach();
    EXPECT_FALSE(memory.isAttached());
}

// A process that was halted as it came to the lock looks like one that waits for it.
TEST(SegmentGateWindowsTest, FreeLockIsNotStuckHoweverLongSomebodyIsAboutToTakeIt)
{
    const UniqueKey key;
    const Observer observer(key);
    const QString name = pavo::segmentWaitName(QSharedMemory(key).nativeKey());
    const pavo::UniqueHandle wait(
        OpenMutexW(SYNCHRONIZE, FALSE, reinterpret_cast<LPCWSTR>(name.utf16())));
    ASSERT_EQ(WaitForSingleObject(wait.get(), 0), WAIT_OBJECT_0);
    for (auto* visit : {&pavo::SegmentGate::lookAtLock, &pavo::SegmentGate::freeLock}) {
        EXPECT_EQ(visit(key, 0).state, pavo::SegmentGate::LockState::Held);
        EXPECT_EQ(lockValue(key), 1);
    }
    QSharedMemory plain(key);
    ASSERT_TRUE(plain.attach());
    ASSERT_TRUE(plain.lock());
    EXPECT_EQ(pavo::SegmentGate::lookAtLock(key, 0).state, pavo::SegmentGate::LockState::Stuck);
    EXPECT_TRUE(plain.unlock());
    ReleaseMutex(wait.get());
    EXPECT_EQ(pavo::SegmentGate::lookAtLock(key, 0).state, pavo::SegmentGate::LockState::Free);
}

// Whether the dead one or a living one has the lock cannot be told, so a plain user that keeps it
// too long loses it: better than that everybody waits for ever. The harm does not last.
TEST(SegmentGateWindowsTest, PlainUserMayLoseItsLockWhenSomebodyInTheGateIsKilled)
{
    const UniqueKey key;
    Member plain(key, 0, false);
    EXPECT_TRUE(plain.attach());
    AttachedProcess victim(key, kFirstVictim);
    AttachedProcess next(key, 1);
    EXPECT_EQ(victim.ask("stop gate"), "ok");
    EXPECT_TRUE(plain.memory().lock());
    victim.kill();
    EXPECT_EQ(next.ask("visit 1"), "ok");
    EXPECT_TRUE(plain.memory().unlock());
    EXPECT_EQ(lockValue(key), 2);
    EXPECT_EQ(next.ask("visit 1"), "ok");
    EXPECT_EQ(lockValue(key), 1);
}
