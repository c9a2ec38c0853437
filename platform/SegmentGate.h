#pragma once

#include <QSharedMemory>
#include <QString>

#include <memory>

namespace pavo {

// A span in which this thread alone, of all processes that use gates, may touch a shared segment
// and its lock: attach, lock, unlock, detach.
//
// The constructor waits for the gate, the destructor leaves it. The system takes the gate back from
// a process that dies within, wherever it dies, and the next one in puts the segment's lock right
// before it goes on: nobody waits for a process that died within. Behind the gate the lock keeps
// doing its duty towards processes that use a plain QSharedMemory and know of no gate.
//
// Any number of objects, threads and processes may use one segment. A thread may enter again what
// it is in already; only the outermost span counts. Gates of different segments are independent.
//
// Where the system refuses the gate (its file or name is taken by something or somebody else), the
// span is open all the same: everything works as with a plain QSharedMemory, with its weaknesses,
// and problem() says why.
class SegmentGate
{
public:
    // The gate of the segment that `memory` has the key of. `memory` must outlive the span and keep
    // its key in it.
    explicit SegmentGate(QSharedMemory& memory);
    ~SegmentGate();
    SegmentGate(const SegmentGate&) = delete;
    SegmentGate& operator=(const SegmentGate&) = delete;

    // Why there is no gate around this span, for a log; empty when there is one.
    [[nodiscard]] QString problem() const;

    // Attaches to the segment, read-write, or makes it of `size` zero bytes if nobody is attached,
    // also if one was left over by processes that crashed. NoError means attached; being so already
    // is no error.
    QSharedMemory::SharedMemoryError attach(int size);

    // Detaches and lets go of the lock. The last one removes both, but for the empty files that
    // name them and the gate. What was attached by attach() has to be detached by it, before
    // `memory` is destroyed: the destructor knows of no gate.
    void detach();

    // Takes the segment's lock, to be given back by the unlock() of `memory` within the span. While
    // a process waits here, or to attach or detach, for somebody without a gate, freeLock() can get
    // past it.
    bool lock();

    // What a look at a segment's lock finds.
    enum class LockState {
        Absent, // nobody uses the segment
        Free,
        Held,  // a process that lives has the lock or, in the gate, keeps the others from it
        Stuck, // taken, and not by a living process that uses the gate, unless one was halted in
               // the moment in which Qt takes it, or has it to attach or detach
        Left,  // the same, and a process died in the gate: the next one in gives the lock back
        Freed,
        Unusable, // for the reason given, lock or gate cannot be looked at
    };
    struct LockFinding
    {
        LockState state;
        QString problem; // for Unusable
    };

    // Looks at the lock of a segment that may be in trouble, from within the gate if that can be
    // had. Frees nothing. Waits at most `patienceMs` for who is in the gate to get the lock, as
    // long for the gate, and as long for the lock.
    static LockFinding lookAtLock(const QString& key, int patienceMs);

    // The same, but gives a lock back that is stuck or left. To be decided by people: the harm that
    // a holder suffers which was slow and not dead is that another one may be inside with it.
    static LockFinding freeLock(const QString& key, int patienceMs);

private:
    class Passage;

    QSharedMemory& m_memory;
    const std::unique_ptr<Passage> m_passage;
};

} // namespace pavo
