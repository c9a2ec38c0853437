#pragma once

#include <memory>

namespace pavo {

class CancellableThread;

/// Frees one thread from the pipe call that it is blocked in: CreateFileA, WaitNamedPipeA,
/// ReadFile, WriteFile or ConnectNamedPipe then fails with ERROR_OPERATION_ABORTED (995).
///
/// Constructed on the thread that is to be freed. cancel() may be called from any thread, for as
/// long as the object lives: a thread that is in no such call, or has ended, does not notice. So a
/// cancel that comes before the thread has entered its call is lost; whoever needs the thread to
/// end repeats it until the thread has.
class ThreadCanceller
{
public:
    ThreadCanceller();
    ~ThreadCanceller();
    ThreadCanceller(const ThreadCanceller&) = delete;
    ThreadCanceller& operator=(const ThreadCanceller&) = delete;

    void cancel();

    /// Waits until that thread has ended altogether, with all that libraries keep for it and clean
    /// up at its end: Qt's wait for a thread may be over before. The thread has to be on its way to
    /// its end.
    void waitForEnd();

private:
    std::shared_ptr<CancellableThread> m_thread;
};

} // namespace pavo
