#include "platform/posix/CancellableThread.h"

#include "platform/posix/LastError.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace pavo {
namespace {

// For poll(): rounded up, so that nobody wakes before the deadline and goes round once more.
int millisecondsUntil(Deadline deadline)
{
    using std::chrono::milliseconds;
    if (deadline == kNoDeadline)
        return -1;
    const auto left = std::chrono::ceil<milliseconds>(deadline - Deadline::clock::now());
    return static_cast<int>(
        std::clamp<milliseconds::rep>(left.count(), 0, std::numeric_limits<int>::max()));
}

} // namespace

std::shared_ptr<CancellableThread> CancellableThread::current()
{
    thread_local const auto self = std::make_shared<CancellableThread>();
    return self;
}

CancellableThread::CancellableThread()
    : m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

DWORD CancellableThread::waitFor(int fd, short events, Deadline deadline)
{
    // Nobody could end a wait without it.
    if (!m_wake)
        return ERROR_TOO_MANY_OPEN_FILES;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_waiting = true;
    }
    pollfd watched[] = {{fd, events, 0}, {m_wake.get(), POLLIN, 0}};
    int ready = 0;
    int problem = 0;
    do {
        ready = poll(watched, 2, millisecondsUntil(deadline));
        problem = errno;
    } while (ready < 0 && problem == EINTR);

    // Under the lock nobody can cancel any more, so the wait ends with nothing left in m_wake that
    // could end a later one.
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting = false;
    if (m_cancelled) {
        m_cancelled = false;
        eventfd_t cancels = 0;
        eventfd_read(m_wake.get(), &cancels);
        return ERROR_OPERATION_ABORTED;
    }
    if (ready < 0)
        return posix::errorFromErrno(problem);
    return ready == 0 ? ERROR_SEM_TIMEOUT : ERROR_SUCCESS;
}

void CancellableThread::cancel()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_waiting && !m_cancelled) {
        m_cancelled = true;
        eventfd_write(m_wake.get(), 1);
    }
}

} // namespace pavo
