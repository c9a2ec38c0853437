// Windows as their finders and posters see them.

#include "platform/posix/LastError.h"
#include "platform/posix/WindowPlace.h"

#include <cerrno>

using namespace pavo::posix;

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
    return conclude(openWindow(window, nullptr) ? ERROR_SUCCESS : ERROR_INVALID_WINDOW_HANDLE);
}

BOOL IsWindowVisible(HWND window)
{
    bool isVisible = false;
    if (!openWindow(window, &isVisible))
        return conclude(ERROR_INVALID_WINDOW_HANDLE);
    return isVisible ? 1 : 0;
}

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const UniqueFd fifo = openWindow(window, nullptr);
    if (!fifo)
        return conclude(ERROR_INVALID_WINDOW_HANDLE);
    const PostedMessage posted{message, wParam, lParam};
    // Whole or not at all, and without waiting; a full FIFO is a full message queue.
    if (::write(fifo.get(), &posted, sizeof posted) == static_cast<ssize_t>(sizeof posted))
        return conclude(ERROR_SUCCESS);
    return conclude(errno == EAGAIN ? ERROR_NOT_ENOUGH_QUOTA : ERROR_INVALID_WINDOW_HANDLE);
}
