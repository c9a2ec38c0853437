// The numbers of registered window messages: the places of their names in a file of the user, so
// that every process gets the same number for a name and no two names share one.

#include "platform/posix/LastError.h"
#include "platform/posix/PipePlace.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace pavo::posix {
namespace {

constexpr UINT kFirstNumber = 0xC000;
constexpr int kMostNumbers = 0x4000;
constexpr int kLongestName = 255;
// Each name ends with it, which none can hold. What follows the last one is a name that a process
// had no time to finish.
constexpr char kEnd = '\0';

bool readAll(const UniqueFd& file, QByteArray& content)
{
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0)
        return false;
    content.resize(static_cast<int>(status.st_size));
    return ::pread(file.get(), content.data(), static_cast<std::size_t>(content.size()), 0) ==
           content.size();
}

DWORD findNumber(const QByteArray& name, UINT& number)
{
    UniqueFd folder;
    const DWORD error = openRuntimeFolder(folder);
    if (error != ERROR_SUCCESS)
        return error;
    const UniqueFd file(
        ::openat(folder.get(), "messages", O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    QByteArray content;
    if (!file || ::flock(file.get(), LOCK_EX) != 0 || !readAll(file, content))
        return errorFromErrno(errno);
    content.truncate(content.lastIndexOf(kEnd) + 1);

    QList<QByteArray> names = content.split(kEnd);
    names.removeLast();
    int place = names.indexOf(name);
    if (place < 0) {
        place = names.size();
        if (place >= kMostNumbers)
            return ERROR_NOT_ENOUGH_MEMORY;
        const ssize_t length = name.size() + 1; // with its end
        if (::pwrite(file.get(), name.constData(), static_cast<std::size_t>(length),
                     content.size()) != length)
            return errorFromErrno(errno);
    }
    number = kFirstNumber + static_cast<UINT>(place);
    return ERROR_SUCCESS;
}

} // namespace
} // namespace pavo::posix

UINT RegisterWindowMessageW(LPCWSTR name)
{
    using namespace pavo::posix;
    const QString text = name ? QString::fromWCharArray(name) : QString();
    UINT number = 0;
    if (text.isEmpty() || text.size() > kLongestName)
        conclude(ERROR_INVALID_PARAMETER);
    else
        conclude(findNumber(text.toCaseFolded().toUtf8(), number));
    return number;
}
