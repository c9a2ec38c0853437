// Windows as their finders and posters see them.

#include "platform/posix/LastError.h"
#include "platform/posix/WindowPlace.h"

#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <ctime>

using namespace pavo::posix;

namespace {

// While it lives, a write of this thread to a FIFO whose reader has gone fails and does no more,
// whatever the process does about SIGPIPE.
class NoPipeSignal
{
public:
    NoPipeSignal()
    {
        sigset_t pending;
        ::sigpending(&pending);
        m_wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        ::sigemptyset(&m_pipe);
        ::sigaddset(&m_pipe, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
    }
    ~NoPipeSignal()
    {
        const timespec noTime{};
        // One that was there before is not ours to take.
        while (!m_wasPending && ::sigtimedwait(&m_pipe, nullptr, &noTime) < 0 && errno == EINTR) {
        }
        ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;

private:
    bool m_wasPending = false;
    sigset_t m_pipe;
    sigset_t m_before;
};

// Whole or not at all, and without waiting; a full FIFO is a full message queue.
DWORD writeMessage(int fifo, const PostedMessage& posted)
{
    const NoPipeSignal noSignal;
    if (::write(fifo, &posted, sizeof posted) == static_cast<ssize_t>(sizeof posted))
        return ERROR_SUCCESS;
    return errno == EAGAIN ? ERROR_NOT_ENOUGH_QUOTA : ERROR_INVALID_WINDOW_HANDLE;
}

} // namespace

HWND FindWindowW(LPCWSTR className, LPCWSTR title)
{
    HWND window = className && title ? findWindow(QString::fromWCharArray(className),
                                                  QString::fromWCharArray(title))
                                     : nullptr;
    conclude(window ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
    return window;
}

BOOL IsWindow(HWND window)
{
    return conclude(windowFifo(window) >= 0 ? ERROR_SUCCESS : ERROR_INVALID_WINDOW_HANDLE);
}

BOOL IsWindowVisible(HWND window)
{
    struct stat status = {};
    if (::fstat(windowFifo(window), &status) != 0)
        return conclude(ERROR_INVALID_WINDOW_HANDLE);
    return (status.st_mode & S_IXUSR) != 0 ? 1 : 0;
}

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const int fifo = windowFifo(window);
    if (fifo < 0)
        return conclude(ERROR_INVALID_WINDOW_HANDLE);
    return conclude(writeMessage(fifo, {message, wParam, lParam}));
}
