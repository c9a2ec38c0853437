#pragma once

#include "platform/Win32.h"
#include "platform/posix/UniqueFd.h"

#include <sys/socket.h>
#include <unistd.h>

namespace pavo::posix {

// What a client and the broker of a pipe name say to each other before the connection either
// becomes an instance's channel or ends.

enum class Wish : DWORD {
    Open,
    /// Answered at once, and if that answer is "busy", once more when an instance is free.
    WaitForInstance,
};

struct Request
{
    Wish wish;
    DWORD access;
};

struct Answer
{
    DWORD error;
    DWORD pipeMode;
    DWORD defaultWait;
};

inline bool answer(const UniqueFd& connection, const Answer& words)
{
    return send(connection.get(), &words, sizeof words, MSG_DONTWAIT | MSG_NOSIGNAL) ==
           ssize_t{sizeof words};
}

/// Whether the far end of a socket was opened by this very user.
inline bool peerIsThisUser(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

} // namespace pavo::posix
