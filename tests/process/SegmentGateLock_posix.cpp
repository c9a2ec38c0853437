#include "platform/SegmentGatePassage.h"
#include "tests/process/SegmentGateMember.h"

#include <QFile>

#include <sys/ipc.h>
#include <sys/sem.h>

int lockValue(const QString& key)
{
    const QString file = pavo::segmentLockName(QSharedMemory(key).nativeKey());
    const key_t number = ftok(QFile::encodeName(file), 'Q');
    return number == -1 ? -1 : semctl(semget(number, 1, 0600), 0, GETVAL);
}
