#include "platform/posix/LastError.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace {

thread_local DWORD t_lastError = ERROR_SUCCESS;

} // namespace

DWORD GetLastError()
{
    return t_lastError;
}

namespace pavo::posix {

DWORD errorFromErrno(int number)
{
    struct Row
    {
        int number;
        DWORD error;
    };
    static constexpr Row kRows[] = {
        {ENOENT, ERROR_FILE_NOT_FOUND},
        {ENOTDIR, ERROR_FILE_NOT_FOUND},
        {EACCES, ERROR_ACCESS_DENIED},
        {EPERM, ERROR_ACCESS_DENIED},
        {EROFS, ERROR_ACCESS_DENIED},
        // A symbolic link where only the real thing is trusted.
        {ELOOP, ERROR_ACCESS_DENIED},
        {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
        {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
        {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
        {ENOBUFS, ERROR_NOT_ENOUGH_MEMORY},
        {EAGAIN, ERROR_NOT_ENOUGH_MEMORY},
        {ENAMETOOLONG, ERROR_INVALID_NAME},
        {EFAULT, ERROR_NOACCESS},
    };
    const auto* row = std::find_if(std::begin(kRows), std::end(kRows),
                                   [number](const Row& each) { return each.number == number; });
    return row == std::end(kRows) ? ERROR_GEN_FAILURE : row->error;
}

BOOL conclude(DWORD error)
{
    if (error == ERROR_SUCCESS)
        return 1;
    t_lastError = error;
    return 0;
}

} // namespace pavo::posix
