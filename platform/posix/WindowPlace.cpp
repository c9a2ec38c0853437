#include "platform/posix/WindowPlace.h"

#include "platform/posix/LastError.h"
#include "platform/posix/PipePlace.h"

#include <QCryptographicHash>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <utility>

namespace pavo::posix {
namespace {

struct DirectoryCloser
{
    void operator()(DIR* directory) const { ::closedir(directory); }
};

constexpr char kPrefix[] = "window-";
constexpr char kLinkPrefix[] = "title-";
constexpr int kHandleDigits = 16;
// Prefix, digest, handle and what separates them.
constexpr int kFileNameLength = sizeof kPrefix - 1 + 40 + 1 + kHandleDigits;

struct FoundWindow
{
    HWND handle = nullptr;
    UniqueFd fifo;
};

// The window that this thread has looked up last: whoever finds one goes on to post to it. It goes
// with its thread; static destructors and exit handlers get a new one, which stays until the
// process is gone.
FoundWindow& lastWindow()
{
    thread_local FoundWindow* window = nullptr;
    struct Cleaner
    {
        ~Cleaner() { delete std::exchange(window, nullptr); }
    };
    thread_local const Cleaner cleaner;
    if (!window)
        window = new FoundWindow;
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the cleaner runs when the thread ends
    return *window;
}

QByteArray handleDigits(HWND window)
{
    return QByteArray::number(static_cast<qulonglong>(reinterpret_cast<std::uintptr_t>(window)), 16)
        .rightJustified(kHandleDigits, '0');
}

QByteArray namePrefix(const QString& className, const QString& title)
{
    const QString names = className + QChar(0) + title;
    return kPrefix +
           QCryptographicHash::hash(names.toCaseFolded().toUtf8(), QCryptographicHash::Sha1)
               .toHex() +
           '-';
}

// The FIFO at `name` if its window lives; that of a dead process is removed with its short cut, and
// so is a short cut to one that is gone.
UniqueFd openLiving(const UniqueFd& folder, const char* name)
{
    UniqueFd fifo(::openat(folder.get(), name, O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    if (!fifo && (errno == ENXIO || errno == ENOENT))
        unlinkWindow(folder, name);
    return fifo;
}

// Whether it is a window, or a short cut to one, that its process was killed over before it had its
// name.
bool isLeftover(const QByteArray& name)
{
    if (!name.startsWith('.') || !name.right(kFileNameLength).startsWith(kPrefix))
        return false;
    const qulonglong handle = name.right(kHandleDigits).toULongLong(nullptr, 16);
    return ::kill(static_cast<pid_t>(handle >> kOwnerShift), 0) != 0 && errno == ESRCH;
}

bool hasReader(const UniqueFd& fifo)
{
    pollfd watched = {fifo.get(), 0, 0};
    return fifo && ::poll(&watched, 1, 0) == 0;
}

// Opens the first living window whose file name fits; `name` becomes that.
template<typename Predicate>
UniqueFd openFirst(const UniqueFd& folder, Predicate fits, QByteArray& name)
{
    // Of its own, since reading a directory moves a position that belongs to the opening.
    const std::unique_ptr<DIR, DirectoryCloser> directory(
        ::fdopendir(::openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr) {
        name = entry->d_name;
        if (isLeftover(name))
            ::unlinkat(folder.get(), name, 0);
        if (!name.startsWith(kPrefix) || !fits(name))
            continue;
        UniqueFd fifo = openLiving(folder, entry->d_name);
        if (fifo)
            return fifo;
    }
    return {};
}

// The short cut to the windows of a file's class and title.
QByteArray linkName(const QByteArray& fileName)
{
    constexpr int kDigestStart = sizeof kPrefix - 1;
    return kLinkPrefix + fileName.mid(kDigestStart, fileName.lastIndexOf('-') - kDigestStart);
}

QByteArray linkTarget(const UniqueFd& folder, const QByteArray& link)
{
    QByteArray target(kFileNameLength + 1, '\0');
    const ssize_t length =
        ::readlinkat(folder.get(), link, target.data(), static_cast<std::size_t>(target.size()));
    target.truncate(length == kFileNameLength ? kFileNameLength : 0);
    return target;
}

} // namespace

void linkWindow(const UniqueFd& folder, const QByteArray& fileName)
{
    const QByteArray newLink = ".link-" + fileName;
    ::unlinkat(folder.get(), newLink, 0);
    if (::symlinkat(fileName, folder.get(), newLink) == 0)
        ::renameat(folder.get(), newLink, folder.get(), linkName(fileName));
}

void unlinkWindow(const UniqueFd& folder, const QByteArray& fileName)
{
    ::unlinkat(folder.get(), fileName, 0);
    const QByteArray link = linkName(fileName);
    if (linkTarget(folder, link) == fileName)
        ::unlinkat(folder.get(), link, 0);
}

QByteArray windowFileName(const QString& className, const QString& title, HWND window)
{
    return namePrefix(className, title) + handleDigits(window);
}

HWND findWindow(const QString& className, const QString& title)
{
    UniqueFd folder;
    if (openRuntimeFolder(folder) != ERROR_SUCCESS)
        return nullptr;
    const QByteArray prefix = namePrefix(className, title);
    const auto fits = [&](const QByteArray& each) {
        return each.startsWith(prefix) && each.size() == kFileNameLength;
    };
    QByteArray name = linkTarget(folder, linkName(prefix));
    UniqueFd fifo = fits(name) ? openLiving(folder, name) : UniqueFd();
    if (!fifo)
        fifo = openFirst(folder, fits, name);
    if (!fifo)
        return nullptr;
    HWND window = windowHandle(name.right(kHandleDigits).toULongLong(nullptr, 16));
    lastWindow() = {window, std::move(fifo)};
    return window;
}

int windowFifo(HWND window)
{
    FoundWindow& last = lastWindow();
    if (last.handle == window && hasReader(last.fifo))
        return last.fifo.get();
    UniqueFd folder;
    if (openRuntimeFolder(folder) != ERROR_SUCCESS)
        return -1;
    const QByteArray ending = '-' + handleDigits(window);
    QByteArray name;
    last = {window,
            openFirst(
                folder, [&](const QByteArray& each) { return each.endsWith(ending); }, name)};
    return last.fifo.get();
}

} // namespace pavo::posix
