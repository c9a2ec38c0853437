#include "platform/posix/WindowPlace.h"

#include "platform/posix/LastError.h"
#include "platform/posix/PipePlace.h"

#include <QCryptographicHash>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>

namespace pavo::posix {
namespace {

struct DirectoryCloser
{
    void operator()(DIR* directory) const { ::closedir(directory); }
};

constexpr char kPrefix[] = "window-";
constexpr int kHandleDigits = 16;

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

// The FIFO at `name` if its window lives; one that nobody reads is removed.
UniqueFd openLiving(const UniqueFd& folder, const char* name)
{
    UniqueFd fifo(::openat(folder.get(), name, O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    if (!fifo && errno == ENXIO)
        ::unlinkat(folder.get(), name, 0);
    return fifo;
}

// Opens the first living window whose file name fits; `name` becomes that.
template<typename Predicate>
UniqueFd openFirst(Predicate fits, QByteArray& name)
{
    UniqueFd folder;
    if (openRuntimeFolder(folder) != ERROR_SUCCESS)
        return {};
    // Of its own, since reading a directory moves a position that belongs to the opening.
    const std::unique_ptr<DIR, DirectoryCloser> directory(
        ::fdopendir(::openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr) {
        name = entry->d_name;
        if (!name.startsWith(kPrefix) || !fits(name))
            continue;
        UniqueFd fifo = openLiving(folder, entry->d_name);
        if (fifo)
            return fifo;
    }
    return {};
}

} // namespace

QByteArray windowFileName(const QString& className, const QString& title, HWND window)
{
    return namePrefix(className, title) + handleDigits(window);
}

HWND findWindow(const QString& className, const QString& title)
{
    const QByteArray prefix = namePrefix(className, title);
    QByteArray name;
    if (!openFirst([&](const QByteArray& each) { return each.startsWith(prefix); }, name))
        return nullptr;
    return windowHandle(name.right(kHandleDigits).toULongLong(nullptr, 16));
}

UniqueFd openWindow(HWND window, bool* isVisible)
{
    const QByteArray ending = '-' + handleDigits(window);
    QByteArray name;
    UniqueFd fifo = openFirst([&](const QByteArray& each) { return each.endsWith(ending); }, name);
    struct stat status = {};
    if (fifo && isVisible)
        *isVisible = ::fstat(fifo.get(), &status) == 0 && (status.st_mode & S_IXUSR) != 0;
    return fifo;
}

} // namespace pavo::posix
