#include "platform/SegmentGatePassage.h"
#include "platform/UniqueHandle.h"
#include "tests/process/SegmentGateMember.h"

int lockValue(const QString& key)
{
    const QString name = pavo::segmentLockName(QSharedMemory(key).nativeKey());
    const pavo::UniqueHandle lock(OpenSemaphoreW(SYNCHRONIZE | SEMAPHORE_MODIFY_STATE, FALSE,
                                                 reinterpret_cast<LPCWSTR>(name.utf16())));
    if (!lock)
        return -1;
    // There is no asking: all are taken and given back.
    LONG value = 0;
    while (WaitForSingleObject(lock.get(), 0) == WAIT_OBJECT_0)
        ++value;
    if (value > 0)
        ReleaseSemaphore(lock.get(), value, nullptr);
    return value;
}

std::shared_ptr<void> blockLock(const QString& key)
{
    const QString name = pavo::segmentLockName(QSharedMemory(key).nativeKey());
    return std::make_shared<pavo::UniqueHandle>(
        CreateEventW(nullptr, FALSE, FALSE, reinterpret_cast<LPCWSTR>(name.utf16())));
}

bool isGateTaken(const QString& key)
{
    const QString name = pavo::segmentGateName(QSharedMemory(key).nativeKey());
    const pavo::UniqueHandle gate(
        OpenMutexW(SYNCHRONIZE, FALSE, reinterpret_cast<LPCWSTR>(name.utf16())));
    if (!gate)
        return false;
    const bool isTaken = WaitForSingleObject(gate.get(), 0) == WAIT_TIMEOUT;
    if (!isTaken)
        ReleaseMutex(gate.get());
    return isTaken;
}
