#pragma once

#include "platform/Win32.h"
#include "platform/posix/UniqueFd.h"

#include <mutex>
#include <vector>

namespace pavo::posix {

/// One end of a connected pipe: writes in, messages or bytes out.
///
/// A write travels as one or more packets, each a flag byte ("more of this message follows") and a
/// part of the data, so that a message may be of any size and may be empty. The kernel's buffer
/// bounds what is under way; past that a write blocks.
class Channel
{
public:
    /// messages: the pipe keeps the bounds of writes.
    Channel(UniqueFd socket, bool messages);

    /// As ReadFile: by message, or bytes of as many writes as have arrived.
    DWORD read(bool byMessage, char* buffer, DWORD size, DWORD& count);
    /// Whole or not at all. If it fails half-way, the connection is broken off, so that the reader
    /// meets the end of the pipe instead of a torn message.
    DWORD write(const char* data, DWORD size);

    bool farEndIsGone() const;
    /// Ends the connection also for threads that are still in a call on it.
    void hangUp();

private:
    DWORD receive(bool wait);
    DWORD send(bool more, const char* data, std::size_t size);

    const UniqueFd m_socket;
    const bool m_messages;

    std::mutex m_writing;
    std::mutex m_reading;
    /// The packet received last, m_begin to m_end of it yet to be read; and its flag.
    std::vector<char> m_packet;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    bool m_more = false;
};

} // namespace pavo::posix
