#include "platform/SegmentGatePassage.h"
#include "platform/UniqueHandle.h"
#include "platform/Win32.h"

#include <map>
#include <mutex>

namespace pavo {
namespace {

// How long somebody without a gate may have the lock, at most, while a process dies in the gate.
constexpr DWORD kLongestHoldMs = 1000;
// How long a process that is in the gate waits for somebody without one before it lets others in.
constexpr DWORD kWaitInGateMs = 20;

LPCWSTR wide(const QString& text)
{
    return reinterpret_cast<LPCWSTR>(text.utf16());
}

// The mutex of that name, or null with the reason in GetLastError(). Kept open once it is open: the
// system forgets that a holder has died when nobody else has the mutex open, and the lock that the
// dead one has left taken may live on. Never destroyed, so that static objects may enter a gate in
// their destructors.
HANDLE gateMutex(const QString& name)
{
    static std::mutex mutex;
    static auto* gates = new std::map<QString, UniqueHandle>;
    const std::lock_guard<std::mutex> lock(mutex);
    UniqueHandle& gate = (*gates)[name];
    if (!gate)
        gate.reset(CreateMutexW(nullptr, FALSE, wide(name)));
    return gate.get();
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
// has it, which is the one case of false, or the last one in the gate died and has it still.
bool putLockRight(const QString& segment, bool holderDied)
{
    const UniqueHandle lock = openLock(segment);
    if (!lock || waitUntilFree(lock.get(), holderDied ? kLongestHoldMs : kWaitInGateMs))
        return true;
    if (holderDied)
        ReleaseSemaphore(lock.get(), 1, nullptr);
    return holderDied;
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
    const HANDLE mutex = gateMutex(gate);
    if (mutex && Hold::isWithin(mutex))
        return;
    // While somebody without a gate has the lock, nobody stays in the gate: whoever has to free the
    // lock of one that died must be able to enter, and finds it taken by none of ours.
    for (bool isFree = false; !isFree;) {
        m_hold.reset();
        const DWORD result = mutex ? WaitForSingleObject(mutex, INFINITE) : WAIT_FAILED;
        if (result == WAIT_FAILED) {
            m_problem =
                gate + QStringLiteral(": ") + qt_error_string(static_cast<int>(GetLastError()));
            return;
        }
        m_hold = std::make_unique<Hold>(mutex);
        isFree = putLockRight(m_segment, result == WAIT_ABANDONED);
    }
}

SegmentGate::Passage::~Passage() = default;

// The system removes segment and lock with the last process that has them open.

void SegmentGate::Passage::prepare(int /*size*/) {}

void SegmentGate::Passage::cleanUp() {}

SegmentGate::LockState SegmentGate::Passage::visitLock(const QString& segment, int patienceMs,
                                                       bool isToBeFreed)
{
    const auto patience = static_cast<DWORD>(patienceMs);
    const UniqueHandle lock = openLock(segment);
    if (!lock)
        return LockState::Absent;
    const HANDLE mutex = gateMutex(segmentGateName(segment));
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
