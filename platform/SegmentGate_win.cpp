#include "platform/SegmentGatePassage.h"
#include "platform/UniqueHandle.h"
#include "platform/Win32.h"

#include <map>
#include <mutex>
#include <thread>

namespace pavo {
namespace {

// How long somebody without a gate may have the lock, at most, while a process dies in the gate.
constexpr DWORD kLongestHoldMs = 1000;

using LockState = SegmentGate::LockState;

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

UniqueHandle openLock(const QString& name)
{
    return UniqueHandle(OpenSemaphoreW(SYNCHRONIZE | SEMAPHORE_MODIFY_STATE, FALSE, wide(name)));
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
    const UniqueHandle lock = openLock(segmentLockName(segment));
    if (lock && !waitUntilFree(lock.get(), holderDied ? kLongestHoldMs : 0) && holderDied)
        ReleaseSemaphore(lock.get(), 1, nullptr);
}

// What visitLock() finds and does, on a thread of its own.
LockState visit(HANDLE gate, HANDLE wait, HANDLE lock, DWORD patience, bool isToBeFreed)
{
    const auto freedOr = [&](LockState state) {
        if (!isToBeFreed)
            return state;
        ReleaseSemaphore(lock, 1, nullptr);
        return LockState::Freed;
    };
    // Whoever is announced that long waits in the gate for a lock that nobody of ours has, or was
    // halted there: it was, if the lock is free. Halted while Qt has the lock, it cannot be told
    // from one that waits.
    if (WaitForSingleObject(wait, patience) == WAIT_TIMEOUT)
        return waitUntilFree(lock, 0) ? LockState::Held : freedOr(LockState::Stuck);
    ReleaseMutex(wait);
    const DWORD result = WaitForSingleObject(gate, patience);
    if (result == WAIT_TIMEOUT)
        return LockState::Held;
    const LockState taken = result == WAIT_ABANDONED ? LockState::Left : LockState::Stuck;
    const LockState state = waitUntilFree(lock, patience) ? LockState::Free : freedOr(taken);
    // The system says but once that somebody died in the gate. Where nothing was done about it, the
    // thread ends without leaving the gate, and the system says it to the next one, too.
    if (state != LockState::Left)
        ReleaseMutex(gate);
    return state;
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
        m_problem = systemProblem(gate);
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
        WaitForSingleObject(openMutex(segmentWaitName(m_segment)), INFINITE);
}

void SegmentGate::Passage::endWait()
{
    if (m_problem.isEmpty())
        ReleaseMutex(openMutex(segmentWaitName(m_segment)));
}

SegmentGate::LockFinding SegmentGate::Passage::visitLock(const QString& segment, int patienceMs,
                                                         bool isToBeFreed)
{
    const QString lockName = segmentLockName(segment);
    const UniqueHandle lock = openLock(lockName);
    if (!lock && GetLastError() == ERROR_FILE_NOT_FOUND)
        return {LockState::Absent, {}};
    if (!lock)
        return {LockState::Unusable, systemProblem(lockName)};
    const QString gateName = segmentGateName(segment);
    const HANDLE gate = openMutex(gateName);
    if (!gate)
        return {LockState::Unusable, systemProblem(gateName)};
    const QString markName = segmentWaitName(segment);
    const HANDLE wait = openMutex(markName);
    if (!wait)
        return {LockState::Unusable, systemProblem(markName)};
    LockState state = LockState::Unusable;
    std::thread([&] {
        state = visit(gate, wait, lock.get(), static_cast<DWORD>(patienceMs), isToBeFreed);
    }).join();
    return {state, {}};
}

} // namespace pavo
