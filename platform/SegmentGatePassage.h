#pragma once

#include "platform/SegmentGate.h"

namespace pavo {

// The system's side of a gate, held from construction to destruction unless there is a problem.
// Construction also puts right what a dead process has left of the lock.
class SegmentGate::Passage
{
public:
    explicit Passage(const QSharedMemory& memory);
    ~Passage();
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

    [[nodiscard]] QString problem() const { return m_problem; }

    // Where the system keeps a segment that nobody uses any more: sees to it that there is one of
    // `size` bytes that is in use or zero, so that attaching is all that is left to do.
    void prepare(int size);
    // Where the system keeps a lock that nobody uses any more: removes it.
    void cleanUp();

    // Around whatever may wait in the gate for somebody without one to leave the lock: lets
    // visitLock() know that the one in the gate has not got it.
    class Wait
    {
    public:
        explicit Wait(Passage& passage)
            : m_passage(passage)
        {
            m_passage.startWait();
        }
        ~Wait() { m_passage.endWait(); }
        Wait(const Wait&) = delete;
        Wait& operator=(const Wait&) = delete;

    private:
        Passage& m_passage;
    };

    // See SegmentGate::lookAtLock() and freeLock().
    static LockFinding visitLock(const QString& segment, int patienceMs, bool isToBeFreed);

private:
    class Hold;

    void startWait();
    void endWait();

    const QString m_segment; // the system's name of the segment
    QString m_problem;
    std::unique_ptr<Hold> m_hold;
};

// What the system says about the call that has just failed for `name`.
QString systemProblem(const QString& name);

// The system's names of what belongs to the segment of that name.
QString segmentGateName(const QString& segment);
QString segmentLockName(const QString& segment);
// On Windows, the mutex that the process in the gate has while it waits for the lock. A lock that
// is taken to attach is waited for without an end, and in the gate: whoever frees it learns by this
// that the one in the gate has not got it.
QString segmentWaitName(const QString& segment);

} // namespace pavo
