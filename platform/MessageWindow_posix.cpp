#include "platform/MessageWindow.h"

#include "platform/WindowClass.h"
#include "platform/posix/PipePlace.h"
#include "platform/posix/WindowPlace.h"

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>

namespace pavo {
namespace {

using namespace posix;

// Room for more than ten thousand messages, as a window's queue has.
constexpr int kQueueSize = 1 << 19;

HWND nextHandle()
{
    static std::atomic<std::uintptr_t> number{0};
    return windowHandle(static_cast<std::uintptr_t>(::getpid()) << kOwnerShift | ++number);
}

} // namespace

struct MessageWindow::Data
{
    HWND handle = nullptr;
    UniqueFd folder;
    QByteArray name;
    UniqueFd fifo;
    std::unique_ptr<QSocketNotifier> notifier;

    bool create(const QString& className, const QString& title, HWND newHandle)
    {
        if (className.isEmpty() || className.size() > kLongestWindowClass ||
            openRuntimeFolder(folder) != ERROR_SUCCESS)
            return false;
        name = windowFileName(className, title, newHandle);
        // Nobody may see it before it is open: it would be taken for the window of a dead process.
        const QByteArray newName = '.' + name;
        ::unlinkat(folder.get(), newName, 0);
        if (::mkfifoat(folder.get(), newName, 0600) != 0)
            return false;
        fifo =
            UniqueFd(::openat(folder.get(), newName, O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
        if (!fifo || ::renameat(folder.get(), newName, folder.get(), name) != 0)
            return false;
        linkWindow(folder, name);
        return true;
    }

    void deliver() const
    {
        PostedMessage posted{};
        if (::read(fifo.get(), &posted, sizeof posted) != static_cast<ssize_t>(sizeof posted))
            return;
        MSG message{handle, static_cast<UINT>(posted.message), posted.wParam, posted.lParam};
        long result = 0;
        // A filter may destroy the window: nothing of it is touched afterwards.
        QAbstractEventDispatcher::instance()->filterNativeEvent("windows_generic_MSG", &message,
                                                                &result);
    }
};

MessageWindow::MessageWindow(const QString& className, const QString& title)
    : m_data(std::make_unique<Data>())
{
    HWND handle = nextHandle();
    if (!m_data->create(className, title, handle))
        return;
    m_data->handle = handle;
    ::fcntl(m_data->fifo.get(), F_SETPIPE_SZ, kQueueSize);
    m_data->notifier = std::make_unique<QSocketNotifier>(m_data->fifo.get(), QSocketNotifier::Read);
    QObject::connect(m_data->notifier.get(), &QSocketNotifier::activated,
                     [data = m_data.get()] { data->deliver(); });
}

MessageWindow::~MessageWindow()
{
    if (m_data->handle)
        unlinkWindow(m_data->folder, m_data->name);
}

HWND MessageWindow::handle() const
{
    return m_data->handle;
}

void MessageWindow::setVisible(bool visible)
{
    if (m_data->handle)
        ::fchmod(m_data->fifo.get(), visible ? 0700 : 0600);
}

} // namespace pavo
