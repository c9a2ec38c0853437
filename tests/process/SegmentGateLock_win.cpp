#include "platform/SegmentGatePassage.h"
#include "platform/UniqueHandle.h"
#include "tests/process/SegmentGateMember.h"

#include <winternl.h>

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

int othersAtGate(const QString& key)
{
    const QString name = pavo::segmentGateName(QSharedMemory(key).nativeKey());
    const pavo::UniqueHandle gate(
        OpenMutexW(SYNCHRONIZE, FALSE, reinterpret_cast<LPCWSTR>(name.utf16())));
    PUBLIC_OBJECT_BASIC_INFORMATION information{};
    if (!gate || NtQueryObject(gate.get(), ObjectBasicInformation, &information,
                               sizeof(information), nullptr) != 0)
        return 0;
    // A process opens the gate as it comes to it for the first time, and keeps it open; this one
    // has it open here, too.
    return static_cast<int>(information.HandleCount) - 2;
}

bool isLockAwaited(const QString& key)
{
    const QString name = pavo::segmentWaitName(QSharedMemory(key).nativeKey());
    const pavo::UniqueHandle wait(
        OpenMutexW(SYNCHRONIZE, FALSE, reinterpret_cast<LPCWSTR>(name.utf16())));
    if (!wait)
        return false;
    const bool isTaken = WaitForSingleObject(wait.get(), 0) == WAIT_TIMEOUT;
    if (!isTaken)
        ReleaseMutex(wait.get());
    return isTaken;
}
