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

// With nobody of ours in the gate there is exactly one lock to take, unless somebody without a gate
// has it or the last one in the gate died and has it still.
void putLockRight(const QString& name, bool holderDied)
{
    const UniqueHandle lock(
        OpenSemaphoreW(SYNCHRONIZE | SEMAPHORE_MODIFY_STATE, FALSE, wide(name)));
    if (!lock)
        return;
    if (WaitForSingleObject(lock.get(), holderDied ? kLongestHoldMs : 0) == WAIT_OBJECT_0) {
        // One too many is what a lock that was given back too early, after all, leaves.
        while (WaitForSingleObject(lock.get(), 0) == WAIT_OBJECT_0) {
        }
        ReleaseSemaphore(lock.get(), 1, nullptr);
    } else if (holderDied) {
        ReleaseSemaphore(lock.get(), 1, nullptr);
    }
}

} // namespace

class SegmentGate::Passage::Hold
{
public:
    explicit Hold(HANDLE mutex)
        : m_mutex(mutex)
    {
    }
    ~Hold() { ReleaseMutex(m_mutex); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

private:
    const HANDLE m_mutex;
};

SegmentGate::Passage::Passage(const QSharedMemory& memory)
    : m_segment(memory.nativeKey())
{
    if (memory.key().isEmpty()) {
        m_problem = QStringLiteral("no key");
        return;
    }
    const QString gate = segmentGateName(m_segment);
    const HANDLE mutex = gateMutex(gate);
    const DWORD result = mutex ? WaitForSingleObject(mutex, INFINITE) : WAIT_FAILED;
    if (result == WAIT_FAILED) {
        m_problem = gate + QStringLiteral(": ") + qt_error_string(static_cast<int>(GetLastError()));
        return;
    }
    m_hold = std::make_unique<Hold>(mutex);
    putLockRight(segmentLockName(m_segment), result == WAIT_ABANDONED);
}

SegmentGate::Passage::~Passage() = default;

// The system removes segment and lock with the last process that has them open.

void SegmentGate::Passage::prepare(int /*size*/) {}

void SegmentGate::Passage::cleanUp() {}

} // namespace pavo
