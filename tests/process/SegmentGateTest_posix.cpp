#include "platform/SegmentGatePassage.h"
#include "tests/process/SegmentGateMember.h"
#include "tests/support/Wait.h"

#include <QFile>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

// What only kernel objects with a life of their own, and files as gates, make possible.

namespace {

QByteArray gatePath(const QString& key)
{
    return QFile::encodeName(pavo::segmentGateName(QSharedMemory(key).nativeKey()));
}

key_t lockKey(const QString& key)
{
    const QString file = pavo::segmentLockName(QSharedMemory(key).nativeKey());
    return ftok(QFile::encodeName(file), 'Q');
}

void makeFile(const char* path)
{
    QFile file(QFile::decodeName(path));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
}

// Things that may stand where the gate should, each of which makes a gate impossible.
struct Obstacle
{
    const char* name;
    void (*place)(const char* path);
    void (*remove)(const char* path);
};

void unlinkPath(const char* path)
{
    ::unlink(path);
}

const Obstacle kObstacles[] = {
    {"link",
     [](const char* path) {
         const QByteArray target = QByteArray(path) + "-target";
         makeFile(target);
         EXPECT_EQ(::symlink(target, path), 0);
     },
     [](const char* path) {
         ::unlink(QByteArray(path) + "-target");
         ::unlink(path);
     }},
    {"folder", [](const char* path) { EXPECT_EQ(::mkdir(path, 0700), 0); },
     [](const char* path) { ::rmdir(path); }},
    {"fifo", [](const char* path) { EXPECT_EQ(::mkfifo(path, 0600), 0); }, unlinkPath},
    {"foreign",
     [](const char* path) {
         makeFile(path);
         if (::chown(path, 12345, 12345) != 0) {
             unlinkPath(path);
             GTEST_SKIP() << "needs the right to give files away";
         }
     },
     unlinkPath},
};

class SegmentGateObstacleTest : public testing::TestWithParam<Obstacle>
{
};

} // namespace

TEST_P(SegmentGateObstacleTest, LeavesAPlainSegment)
{
    const UniqueKey key;
    const QByteArray path = gatePath(key);
    GetParam().place(path);
    {
        QSharedMemory memory(key);
        pavo::SegmentGate gate(memory);
        EXPECT_TRUE(gate.problem().contains(QFile::decodeName(path)));
        EXPECT_EQ(gate.attach(kSegmentSize), QSharedMemory::NoError);
        EXPECT_TRUE(memory.lock());
        EXPECT_TRUE(memory.unlock());
        const auto finding = pavo::SegmentGate::lookAtLock(key, 0);
        EXPECT_EQ(finding.state, pavo::SegmentGate::LockState::Unusable);
        EXPECT_TRUE(finding.problem.contains(QFile::decodeName(path)));
        gate.detach();
        EXPECT_FALSE(memory.isAttached());
    }
    GetParam().remove(path);
}

INSTANTIATE_TEST_SUITE_P(Things, SegmentGateObstacleTest, testing::ValuesIn(kObstacles),
                         [](const auto& obstacle) { return std::string(obstacle.param.name); });

TEST(SegmentGatePosixTest, GateIsOpenToThisUserOnly)
{
    const UniqueKey key;
    const Observer observer(key);
    struct stat status
    {
    };
    ASSERT_EQ(::lstat(gatePath(key), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | mode_t{0600});
}

TEST(SegmentGatePosixTest, PlaceWithoutFilesIsAnError)
{
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", "/proc");
    {
        QSharedMemory memory(QStringLiteral("segment-without-files"));
        pavo::SegmentGate gate(memory);
        EXPECT_NE(gate.problem(), QString());
        EXPECT_EQ(gate.attach(kSegmentSize), QSharedMemory::KeyError);
        gate.detach();
    }
    if (before.isNull())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", before);
}

TEST(SegmentGatePosixTest, LeftOverSegmentOfAnotherSizeIsReplaced)
{
    const UniqueKey key;
    const QByteArray path = QFile::encodeName(QSharedMemory(key).nativeKey());
    makeFile(path);
    ASSERT_NE(::shmget(::ftok(path, 'Q'), 10, 0600 | IPC_CREAT | IPC_EXCL), -1);
    Observer observer(key);
    EXPECT_EQ(observer.memory().size(), kSegmentSize);
    EXPECT_TRUE(observer.boardIsZero());
}

TEST(SegmentGatePosixTest, LockThatItsMakerLeftWithoutAValueGetsOne)
{
    const UniqueKey key;
    AttachedProcess member(key, 0);
    ::semctl(::semget(lockKey(key), 1, 0600), 0, IPC_RMID);
    ASSERT_NE(::semget(lockKey(key), 1, 0600 | IPC_CREAT | IPC_EXCL), -1);
    ASSERT_EQ(lockValue(key), 0);
    EXPECT_EQ(member.ask("visit 1"), "ok");
    EXPECT_EQ(lockValue(key), 1);
}

TEST(SegmentGatePosixTest, LockThatAPlainUserHasTakenAlongIsReplaced)
{
    const UniqueKey key;
    AttachedProcess member(key, 0);
    ::semctl(::semget(lockKey(key), 1, 0600), 0, IPC_RMID);
    EXPECT_TRUE(QFile::remove(pavo::segmentLockName(QSharedMemory(key).nativeKey())));
    EXPECT_EQ(member.ask("visit 1"), "ok");
    EXPECT_EQ(lockValue(key), 1);
    Member second(key, 1, true);
    EXPECT_TRUE(second.attach());
    second.detach();
    EXPECT_EQ(lockValue(key), 1);
}

TEST(SegmentGatePosixTest, ForkedChildIsNotIn)
{
    const UniqueKey key;
    QSharedMemory memory(key);
    int blocked[2];
    ASSERT_EQ(::pipe2(blocked, O_CLOEXEC), 0);
    pid_t child = -1;
    {
        const pavo::SegmentGate gate(memory);
        child = ::fork();
        if (child == 0) {
            // Lives on with whatever it has inherited until the test lets it go.
            ::close(blocked[1]);
            char byte = 0;
            ::_exit(static_cast<int>(::read(blocked[0], &byte, 1)));
        }
    }
    AttachedProcess other(key, 0);
    ::close(blocked[1]);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    ::close(blocked[0]);
}

TEST(SegmentGatePosixTest, PlainUserInsideKeepsItsLockWhenSomebodyInTheGateIsKilled)
{
    const UniqueKey key;
    Member plain(key, 0, false);
    EXPECT_TRUE(plain.attach());
    AttachedProcess victim(key, kFirstVictim);
    AttachedProcess next(key, 1);
    EXPECT_EQ(victim.ask("stop gate"), "ok");
    EXPECT_TRUE(plain.memory().lock());
    victim.kill();
    next.tell("visit 1");
    EXPECT_TRUE(waitUntil([&key] { return isLockAwaited(key); }));
    EXPECT_EQ(plain.board().total, 0);
    EXPECT_TRUE(plain.memory().unlock());
    EXPECT_EQ(next.answer(), "ok");
    EXPECT_EQ(lockValue(key), 1);
}
