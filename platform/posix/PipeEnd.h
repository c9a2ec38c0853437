#pragma once

#include "platform/Win32.h"
#include "platform/posix/Channel.h"

#include <atomic>
#include <memory>

namespace pavo::posix {

/// What a pipe handle stands for.
class PipeEnd
{
public:
    virtual ~PipeEnd() = default;
    PipeEnd(const PipeEnd&) = delete;
    PipeEnd& operator=(const PipeEnd&) = delete;

    /// The connection to the far end, kept alive for the caller; or why there is none.
    virtual DWORD channel(std::shared_ptr<Channel>& channel) = 0;

    bool mayRead() const { return (m_access & GENERIC_READ) != 0; }
    bool mayWrite() const { return (m_access & GENERIC_WRITE) != 0; }
    /// Also a right, on Windows: one that comes with writing, or with FILE_WRITE_ATTRIBUTES.
    bool maySetMode() const { return (m_access & (GENERIC_WRITE | FILE_WRITE_ATTRIBUTES)) != 0; }
    bool readsByMessage() const { return m_readMode == PIPE_READMODE_MESSAGE; }
    DWORD setReadMode(DWORD mode);

protected:
    /// access as CreateFileA has it; pipeMode as CreateNamedPipeA has it.
    PipeEnd(DWORD access, DWORD pipeMode);

private:
    const DWORD m_access;
    const bool m_messages;
    std::atomic<DWORD> m_readMode;
};

/// Handles are numbers that are never used twice, so that a closed one is merely unknown. A pipe
/// end lives until it is closed and the last call on it has returned.
HANDLE openHandle(std::shared_ptr<PipeEnd> end);
std::shared_ptr<PipeEnd> endOfHandle(HANDLE handle);

} // namespace pavo::posix
