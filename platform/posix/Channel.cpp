#include "platform/posix/Channel.h"

#include "platform/posix/CancellableThread.h"
#include "platform/posix/LastError.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace pavo::posix {
namespace {

// Well below what one packet of a local socket can carry.
constexpr std::size_t kPartSize = std::size_t{32} * 1024;

} // namespace

Channel::Channel(UniqueFd socket, bool messages)
    : m_socket(std::move(socket))
    , m_messages(messages)
{
}

DWORD Channel::read(bool byMessage, char* buffer, DWORD size, DWORD& count)
{
    const std::lock_guard<std::mutex> lock(m_reading);
    bool begun = false;
    do {
        if (m_begin == m_end) {
            // Bytes are read as far as they have arrived, a message to its end.
            const DWORD error = receive(byMessage || !begun);
            if (error != ERROR_SUCCESS) {
                if (begun && !byMessage)
                    return ERROR_SUCCESS;
                // What a cancelled read has taken of a message stays the caller's.
                if (count > 0 && error == ERROR_OPERATION_ABORTED)
                    return ERROR_MORE_DATA;
                count = 0;
                return error;
            }
        }
        begun = true;
        const std::size_t taken = std::min<std::size_t>(m_end - m_begin, size - count);
        if (taken > 0)
            std::memcpy(buffer + count, m_packet.data() + m_begin, taken);
        m_begin += taken;
        count += static_cast<DWORD>(taken);
    } while (count < size && (!byMessage || m_more));
    return byMessage && (m_begin < m_end || m_more) ? ERROR_MORE_DATA : ERROR_SUCCESS;
}

DWORD Channel::write(const char* data, DWORD size)
{
    if (size == 0 && !m_messages)
        return ERROR_SUCCESS;
    const std::lock_guard<std::mutex> lock(m_writing);
    std::size_t done = 0;
    do {
        const std::size_t part = std::min<std::size_t>(size - done, kPartSize);
        const DWORD error = send(done + part < size, data + done, part);
        if (error != ERROR_SUCCESS) {
            if (done > 0)
                shutdown(m_socket.get(), SHUT_WR);
            return error;
        }
        done += part;
    } while (done < size);
    return ERROR_SUCCESS;
}

bool Channel::farEndIsGone() const
{
    pollfd watched = {m_socket.get(), 0, 0};
    return poll(&watched, 1, 0) == 1 && (watched.revents & POLLHUP) != 0;
}

void Channel::hangUp()
{
    shutdown(m_socket.get(), SHUT_RDWR);
}

// Without wait, ERROR_NO_DATA means that nothing has arrived.
DWORD Channel::receive(bool wait)
{
    m_packet.resize(1 + kPartSize);
    for (;;) {
        const ssize_t size = recv(m_socket.get(), m_packet.data(), m_packet.size(), MSG_DONTWAIT);
        if (size > 0) {
            m_more = m_packet[0] != 0;
            m_begin = 1;
            m_end = static_cast<std::size_t>(size);
            return ERROR_SUCCESS;
        }
        if (size == 0)
            return ERROR_BROKEN_PIPE;
        // A far end that closed without reading everything is reported once as a reset, ahead of
        // what it had written.
        if (errno == EINTR || errno == ECONNRESET)
            continue;
        if (errno != EAGAIN)
            return errorFromErrno(errno);
        if (!wait)
            return ERROR_NO_DATA;
        const DWORD error = CancellableThread::current()->waitFor(m_socket.get(), POLLIN);
        if (error != ERROR_SUCCESS)
            return error;
    }
}

DWORD Channel::send(bool more, const char* data, std::size_t size)
{
    char flag = more ? 1 : 0;
    iovec parts[] = {{&flag, 1}, {const_cast<char*>(data), size}};
    msghdr packet = {};
    packet.msg_iov = parts;
    packet.msg_iovlen = 2;
    for (;;) {
        if (sendmsg(m_socket.get(), &packet, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0)
            return ERROR_SUCCESS;
        switch (errno) {
        case EINTR:
            continue;
        case EPIPE:
        case ECONNRESET:
        case ECONNREFUSED:
        case ENOTCONN:
            return ERROR_NO_DATA;
        case EAGAIN:
            break;
        default:
            return errorFromErrno(errno);
        }
        const DWORD error = CancellableThread::current()->waitFor(m_socket.get(), POLLOUT);
        if (error != ERROR_SUCCESS)
            return error;
    }
}

} // namespace pavo::posix
