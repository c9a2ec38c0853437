#include "platform/SegmentGatePassage.h"
#include "platform/posix/UniqueFd.h"
#include "tests/process/SegmentGateMember.h"

#include <gtest/gtest.h>

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

int lockValue(const QString& key)
{
    const QString file = pavo::segmentLockName(QSharedMemory(key).nativeKey());
    const key_t number = ftok(QFile::encodeName(file), 'Q');
    return number == -1 ? -1 : semctl(semget(number, 1, 0600), 0, GETVAL);
}

std::shared_ptr<void> blockLock(const QString& key)
{
    const auto path = QFile::encodeName(pavo::segmentLockName(QSharedMemory(key).nativeKey()));
    ::unlink(path);
    EXPECT_EQ(::symlink(path, path), 0) << "a link that leads nowhere";
    return {nullptr, [path](void*) { ::unlink(path); }};
}

bool isGateTaken(const QString& key)
{
    const QString name = pavo::segmentGateName(QSharedMemory(key).nativeKey());
    const pavo::posix::UniqueFd gate(::open(QFile::encodeName(name), O_RDWR | O_CLOEXEC));
    return gate && flock(gate.get(), LOCK_EX | LOCK_NB) != 0;
}
