#pragma once

#include "platform/Win32.h"

namespace pavo::posix {

/// What GetLastError says for an errno value; errors of a socket in use are told apart where they
/// arise.
DWORD errorFromErrno(int number);

/// Ends a system call: sets the thread's last error unless it is ERROR_SUCCESS, and says whether
/// the call succeeded.
BOOL conclude(DWORD error);

} // namespace pavo::posix
