#pragma once

#include "platform/Win32.h"
#include "platform/posix/ThreadEnd.h"
#include "platform/posix/UniqueFd.h"

#include <chrono>
#include <memory>
#include <mutex>

namespace pavo {

using Deadline = std::chrono::steady_clock::time_point;
constexpr Deadline kNoDeadline = Deadline::max();

/// A thread as far as it waits for file descriptors: all blocking of the pipe calls happens in
/// waitFor(), and cancel() ends it from another thread.
class CancellableThread
{
public:
    /// The calling thread.
    static std::shared_ptr<CancellableThread> current();

    CancellableThread();

    /// Until fd is ready for the events: ERROR_SUCCESS, or ERROR_SEM_TIMEOUT once the deadline has
    /// passed, or ERROR_OPERATION_ABORTED. For the thread itself only.
    DWORD waitFor(int fd, short events, Deadline deadline = kNoDeadline);
    void cancel();

    [[nodiscard]] const ThreadEnd& end() const { return m_end; }

private:
    const ThreadEnd m_end;
    const posix::UniqueFd m_wake;
    std::mutex m_mutex;
    bool m_waiting = false;
    bool m_cancelled = false;
};

} // namespace pavo
