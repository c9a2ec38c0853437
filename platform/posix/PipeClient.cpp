#include "platform/posix/CancellableThread.h"
#include "platform/posix/Hearing.h"
#include "platform/posix/LastError.h"
#include "platform/posix/PipeEnd.h"
#include "platform/posix/PipePlace.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace pavo::posix {
namespace {

using std::chrono::milliseconds;

// How long to queue for a hearing. The broker hears everybody at once, so there is a queue only
// when thousands call or the host is halted, and nothing can cancel this wait.
constexpr timeval kQueueTime = {2, 0};
// A wait shorter than this gives the broker this long for its first word all the same, so that a
// loaded machine does not make a free instance look busy.
constexpr milliseconds kAnswerTime(1000);
// As Windows has it where the host names no time of its own.
constexpr DWORD kDefaultWait = 50;

class ClientEnd : public PipeEnd
{
public:
    ClientEnd(UniqueFd socket, DWORD access, DWORD pipeMode)
        // A client starts reading bytes whatever the pipe's kind.
        : PipeEnd(access, pipeMode & PIPE_TYPE_MESSAGE)
        , m_channel(
              std::make_shared<Channel>(std::move(socket), (pipeMode & PIPE_TYPE_MESSAGE) != 0))
    {
    }

    DWORD channel(std::shared_ptr<Channel>& channel) override
    {
        channel = m_channel;
        return ERROR_SUCCESS;
    }

private:
    const std::shared_ptr<Channel> m_channel;
};

DWORD errorOfConnect(int number)
{
    switch (number) {
    // The host has died and left its socket, or this is no pipe at all.
    case ECONNREFUSED:
    case EPROTOTYPE:
        return ERROR_FILE_NOT_FOUND;
    case EAGAIN:
        return ERROR_PIPE_BUSY;
    default:
        return errorFromErrno(number);
    }
}

DWORD connectTo(LPCSTR name, UniqueFd& connection)
{
    PipePlace place;
    const DWORD error = PipePlace::find(name, place);
    if (error != ERROR_SUCCESS)
        return error;
    connection = UniqueFd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    if (!connection)
        return errorFromErrno(errno);
    setsockopt(connection.get(), SOL_SOCKET, SO_SNDTIMEO, &kQueueTime, sizeof kQueueTime);
    const sockaddr_un address = place.address();
    int result = 0;
    do
        result =
            connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    while (result != 0 && errno == EINTR);
    if (result != 0)
        return errorOfConnect(errno);
    return peerIsThisUser(connection.get()) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

DWORD receiveAnswer(const UniqueFd& connection, Deadline deadline, Answer& answer)
{
    for (;;) {
        const ssize_t size = recv(connection.get(), &answer, sizeof answer, MSG_DONTWAIT);
        if (size == ssize_t{sizeof answer})
            return ERROR_SUCCESS;
        // A host that ends hangs up on whoever still waits.
        if (size >= 0)
            return ERROR_FILE_NOT_FOUND;
        if (errno == EINTR || errno == ECONNRESET)
            continue;
        if (errno != EAGAIN)
            return errorFromErrno(errno);
        const DWORD error =
            CancellableThread::current()->waitFor(connection.get(), POLLIN, deadline);
        if (error != ERROR_SUCCESS)
            return error;
    }
}

DWORD ask(LPCSTR name, const Request& request, Deadline deadline, UniqueFd& connection,
          Answer& answer)
{
    DWORD error = connectTo(name, connection);
    if (error != ERROR_SUCCESS)
        return error;
    // Fits the socket's buffer. That the host has just hung up shows in the answer.
    static_cast<void>(
        send(connection.get(), &request, sizeof request, MSG_DONTWAIT | MSG_NOSIGNAL));
    error = receiveAnswer(connection, deadline, answer);
    return error != ERROR_SUCCESS ? error : answer.error;
}

DWORD openPipe(LPCSTR name, DWORD access, HANDLE& handle)
{
    UniqueFd connection;
    Answer answer = {};
    const DWORD error = ask(name, {Wish::Open, access}, kNoDeadline, connection, answer);
    if (error == ERROR_SUCCESS)
        handle =
            openHandle(std::make_shared<ClientEnd>(std::move(connection), access, answer.pipeMode));
    return error;
}

DWORD waitForInstance(LPCSTR name, DWORD time)
{
    const Deadline start = Deadline::clock::now();
    const auto after = [start](DWORD wait) {
        return wait == NMPWAIT_WAIT_FOREVER ? kNoDeadline : start + milliseconds(wait);
    };
    UniqueFd connection;
    Answer answer = {};
    const DWORD error = ask(name, {Wish::WaitForInstance, 0},
                            std::max(after(time), start + kAnswerTime), connection, answer);
    if (error != ERROR_PIPE_BUSY)
        return error;
    if (answer.error != ERROR_PIPE_BUSY)
        return ERROR_SEM_TIMEOUT;
    if (time == NMPWAIT_USE_DEFAULT_WAIT)
        time = answer.defaultWait > 0 ? answer.defaultWait : kDefaultWait;
    return receiveAnswer(connection, after(time), answer);
}

} // namespace
} // namespace pavo::posix

using namespace pavo::posix;

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD /*shareMode*/,
                   LPSECURITY_ATTRIBUTES /*security*/, DWORD disposition, DWORD /*flags*/,
                   HANDLE /*templateFile*/)
{
    HANDLE handle = INVALID_HANDLE_VALUE;
    // A client never makes a pipe.
    conclude(disposition == OPEN_EXISTING ? openPipe(name, access, handle)
                                          : ERROR_INVALID_PARAMETER);
    return handle;
}

BOOL WaitNamedPipeA(LPCSTR name, DWORD milliseconds)
{
    return conclude(waitForInstance(name, milliseconds));
}
