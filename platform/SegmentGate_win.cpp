#include "platform/SegmentGatePassage.h"
#include "platform/UniqueHandle.h"
#include "platform/Win32.h"

#include <map>
#include <mutex>

namespace pavo {
namespace {

// How long somebody without a gate may have the lock, at most, while a process dies in the gate.
constexpr DWORD kLongestHoldMs = 1000;

LPCWSTR wide(const QString& text)
{
    return reinterpret_cast<LPCWSTR>(text.utf16());
}

// The mutex of that name, or null with the reason in GetLastError(). Kept open once it is open: the
// system forgets that a holder has died when nobody else has the mutex open, and the lock that the
// dead one has left taken may live on. Never destroyed, so that static objects may enter a gate in
// their destructors.
HANDLE openMutex(const QString& name)
{
    static std::mutex mutex;
    static auto* opened = new std::map<QString, UniqueHandle>;
    const std::lock_guard<std::mutex> lock(mutex);
    UniqueHandle& handle = (*opened)[name];
    if (!handle)
        handle.reset(CreateMutexW(nullptr, FALSE, wide(name)));
    return handle.get();
}

// Taken by the process in the gate while it waits for the lock. The lock cannot be waited for but
// without an end where the segment is attached to, so it is waited for in the gate; whoever frees it
// learns by this that the one in the gate has not got it.
HANDLE waitMutex(const QString& segment)
{
    return openMutex(segment + QStringLiteral("_wait"));
}

UniqueHandle openLock(const QString& segment)
{
    return UniqueHandle(OpenSemaphoreW(SYNCHRONIZE | SEMAPHORE_MODIFY_STATE, FALSE,
                                       wide(segmentLockName(segment))));
}

// Whether the lock is to be had within this time; then there is exactly one to take.
bool waitUntilFree(HANDLE lock, DWORD milliseconds)
{
    if (WaitForSingleObject(lock, milliseconds) != WAIT_OBJECT_0)
        return false;
    // One too many is what a lock that was given back too early, after all, leaves.
    while (WaitForSingleObject(lock, 0) == WAIT_OBJECT_0) {
    }
    ReleaseSemaphore(lock, 1, nullptr);
    return true;
}

// With nobody of ours in the gate there is exactly one lock to take, unless somebody without a gate
// has it, or the last one in the gate died and has it still.
void putLockRight(const QString& segment, bool holderDied)
{
    const UniqueHandle lock = openLock(segment);
    if (lock && !waitUntilFree(lock.get(), holderDied ? kLongestHoldMs : 0) && holderDied)
        ReleaseSemaphore(lock.get(), 1, nullptr);
}

} // namespace

// The span of a thread, the outermost one.
class SegmentGate::Passage::Hold
{
public:
    explicit Hold(HANDLE mutex)
        : m_mutex(mutex)
    {
        s_innermost = this;
    }
    ~Hold()
    {
        s_innermost = m_outer;
        ReleaseMutex(m_mutex);
    }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    static bool isWithin(HANDLE mutex)
    {
        const Hold* hold = s_innermost;
        while (hold && hold->m_mutex != mutex)
            hold = hold->m_outer;
        return hold;
    }

private:
    // Plain pointers: static objects may enter a gate in their destructors.
    static thread_local const Hold* s_innermost;

    const HANDLE m_mutex;
    const Hold* const m_outer = s_innermost;
};

thread_local const SegmentGate::Passage::Hold* SegmentGate::Passage::Hold::s_innermost = nullptr;

SegmentGate::Passage::Passage(const QSharedMemory& memory)
    : m_segment(memory.nativeKey())
{
    if (memory.key().isEmpty()) {
        m_problem = QStringLiteral("no key");
        return;
    }
    const QString gate = segmentGateName(m_segment);
    const HANDLE mutex = openMutex(gate);
    if (mutex && Hold::isWithin(mutex))
        return;
    const DWORD result = mutex ? WaitForSingleObject(mutex, INFINITE) : WAIT_FAILED;
    if (result == WAIT_FAILED) {
        m_problem = gate + QStringLiteral(": ") + qt_error_string(static_cast<int>(GetLastError()));
        return;
    }
    m_hold = std::make_unique<Hold>(mutex);
    putLockRight(m_segment, result == WAIT_ABANDONED);
}

SegmentGate::Passage::~Passage() = default;

// The system removes segment and lock with the last process that has them open.

void SegmentGate::Passage::prepare(int /*size*/) {}

void SegmentGate::Passage::cleanUp() {}

void SegmentGate::Passage::startWait()
{
    // Without a gate it would be in the way of others that wait.
    if (m_problem.isEmpty())
        WaitForSingleObject(waitMutex(m_segment), INFINITE);
}

void SegmentGate::Passage::endWait()
{
    if (m_problem.isEmpty())
        ReleaseMutex(waitMutex(m_segment));
}

SegmentGate::LockState SegmentGate::Passage::visitLock(const QString& segment, int patienceMs,
                                                       bool isToBeFreed)
{
    const auto patience = static_cast<DWORD>(patienceMs);
    const UniqueHandle lock = openLock(segment);
    if (!lock)
        return LockState::Absent;
    // Who waits that long is in the gate and has no lock, and nobody else of ours can have it.
    const HANDLE wait = waitMutex(segment);
    if (WaitForSingleObject(wait, patience) == WAIT_TIMEOUT) {
        if (!isToBeFreed)
            return LockState::Stuck;
        ReleaseSemaphore(lock.get(), 1, nullptr);
        return LockState::Freed;
    }
    ReleaseMutex(wait);
    const HANDLE mutex = openMutex(segmentGateName(segment));
    const DWORD result = mutex ? WaitForSingleObject(mutex, patience) : WAIT_FAILED;
    const bool holderDied = result == WAIT_ABANDONED;
    if (result != WAIT_OBJECT_0 && !holderDied)
        return LockState::Held;
    const Hold hold(mutex);
    if (waitUntilFree(lock.get(), patience))
        return LockState::Free;
    // The system says but once that a holder died.
    if (!isToBeFreed && !holderDied)
        return LockState::Stuck;
    ReleaseSemaphore(lock.get(), 1, nullptr);
    return LockState::Freed;
}

} // namespace pavo
