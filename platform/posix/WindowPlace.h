#pragma once

#include "platform/Win32.h"
#include "platform/posix/UniqueFd.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace pavo::posix {

// A window is a FIFO in the user's runtime folder. Its owner holds it open for reading and whoever
// posts writes to it, so that a FIFO which nobody reads is the window of a dead process. The name
// holds a digest of class and title, and the window's handle.
//
// The FIFO of a visible window is executable: that can be changed in one step.
//
// A link, named by the digest alone, leads to the latest window of a class and title. It is a short
// cut past the list of all windows and no more than that: it may be missing or lead nowhere.

// What is written to the FIFO for one post.
struct PostedMessage
{
    std::uint64_t message;
    WPARAM wParam;
    LPARAM lParam;
};

// A handle is a number: any process can tell which window it names, and from its upper half, which
// is the owner's process id, whether that lives. No two living processes have the same.
constexpr unsigned kOwnerShift = 32;

inline HWND windowHandle(std::uintptr_t number)
{
    return reinterpret_cast<HWND>(number); // NOLINT(performance-no-int-to-ptr)
}

// Adds the short cut to a window that is there already, and removes a window with its short cut.
void linkWindow(const UniqueFd& folder, const QByteArray& fileName);
void unlinkWindow(const UniqueFd& folder, const QByteArray& fileName);

QByteArray windowFileName(const QString& className, const QString& title, HWND window);

// The window of that class and title, or null. Handed out by FindWindowW.
HWND findWindow(const QString& className, const QString& title);

// The FIFO of a living window, open for writing until this thread looks for another window, or -1.
int windowFifo(HWND window);

} // namespace pavo::posix
