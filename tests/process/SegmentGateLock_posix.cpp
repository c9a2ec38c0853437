#include "platform/SegmentGatePassage.h"
#include "tests/process/SegmentGateMember.h"

#include <gtest/gtest.h>

#include <QFile>

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>

namespace {

int askLock(const QString& key, int question)
{
    const QString file = pavo::segmentLockName(QSharedMemory(key).nativeKey());
    const key_t number = ftok(QFile::encodeName(file), 'Q');
    return number == -1 ? -1 : semctl(semget(number, 1, 0600), 0, question);
}

} // namespace

int lockValue(const QString& key)
{
    return askLock(key, GETVAL);
}

std::shared_ptr<void> blockLock(const QString& key)
{
    const auto path = QFile::encodeName(pavo::segmentLockName(QSharedMemory(key).nativeKey()));
    ::unlink(path);
    EXPECT_EQ(::symlink(path, path), 0) << "a link that leads nowhere";
    return {nullptr, [path](void*) { ::unlink(path); }};
}

int othersAtGate(const QString& key)
{
    const QString name = pavo::segmentGateName(QSharedMemory(key).nativeKey());
    struct stat status
    {
    };
    if (::stat(QFile::encodeName(name), &status) != 0)
        return 0;
    const std::string file = ':' + std::to_string(status.st_ino) + ' ';
    std::ifstream locks("/proc/locks");
    int count = 0;
    for (std::string lock; std::getline(locks, lock);)
        count += lock.find(file) != std::string::npos ? 1 : 0;
    return count;
}

bool isLockAwaited(const QString& key)
{
    return askLock(key, GETNCNT) > 0;
}
