#pragma once

#include "platform/Win32.h"
#include "platform/posix/UniqueFd.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <string>

namespace pavo::posix {

/// Where the socket of a pipe name lies.
///
/// \\.\pipe\NAME and plain NAME, in any case, lie in the user's runtime folder; an absolute path
/// lies where it says. The folder is held open and the socket addressed through it: the folder that
/// was checked is the folder that is used, and its own path may be of any length.
class PipePlace
{
public:
    /// ERROR_SUCCESS, or why no pipe can have this name.
    static DWORD find(LPCSTR name, PipePlace& place);

    const UniqueFd& folder() const { return m_folder; }
    const std::string& file() const { return m_file; }
    sockaddr_un address() const;
    /// The same for the same place, by whatever path it was found.
    const std::string& id() const { return m_id; }

private:
    DWORD findByName(const char* name);
    DWORD findByPath(const char* path);

    UniqueFd m_folder;
    std::string m_file;
    std::string m_id;
};

/// The folder of this user's pipes, made if need be: $XDG_RUNTIME_DIR/pavo, or /tmp/pavo-UID where
/// that is not set. One that others can enter, or that is another user's, is refused.
DWORD openRuntimeFolder(UniqueFd& folder);

} // namespace pavo::posix
