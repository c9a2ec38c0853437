#include "platform/posix/PipeEnd.h"

#include "platform/posix/LastError.h"

#include <mutex>
#include <unordered_map>
#include <utility>

namespace pavo::posix {
namespace {

struct HandleTable
{
    std::mutex mutex;
    std::unordered_map<std::uintptr_t, std::shared_ptr<PipeEnd>> ends;
    std::uintptr_t last = 0;
};

// Never destroyed: handles may be closed while the process exits.
HandleTable& handleTable()
{
    static auto* table = new HandleTable;
    return *table;
}

std::uintptr_t numberOf(HANDLE handle)
{
    return reinterpret_cast<std::uintptr_t>(handle);
}

} // namespace

PipeEnd::PipeEnd(DWORD access, DWORD pipeMode)
    : m_access(access)
    , m_messages((pipeMode & PIPE_TYPE_MESSAGE) != 0)
    , m_readMode(pipeMode & PIPE_READMODE_MESSAGE)
{
}

DWORD PipeEnd::setReadMode(DWORD mode)
{
    if ((mode & ~PIPE_READMODE_MESSAGE) != 0 || (mode == PIPE_READMODE_MESSAGE && !m_messages))
        return ERROR_INVALID_PARAMETER;
    m_readMode = mode;
    return ERROR_SUCCESS;
}

HANDLE openHandle(std::shared_ptr<PipeEnd> end)
{
    HandleTable& table = handleTable();
    const std::lock_guard<std::mutex> lock(table.mutex);
    table.last += 4;
    table.ends.emplace(table.last, std::move(end));
    // NOLINTNEXTLINE(performance-no-int-to-ptr): nobody dereferences a handle.
    return reinterpret_cast<HANDLE>(table.last);
}

std::shared_ptr<PipeEnd> endOfHandle(HANDLE handle)
{
    HandleTable& table = handleTable();
    const std::lock_guard<std::mutex> lock(table.mutex);
    const auto found = table.ends.find(numberOf(handle));
    return found == table.ends.end() ? nullptr : found->second;
}

namespace {

std::shared_ptr<PipeEnd> forgetHandle(HANDLE handle)
{
    HandleTable& table = handleTable();
    const std::lock_guard<std::mutex> lock(table.mutex);
    const auto found = table.ends.find(numberOf(handle));
    if (found == table.ends.end())
        return nullptr;
    auto end = std::move(found->second);
    table.ends.erase(found);
    return end;
}

DWORD setState(HANDLE handle, const DWORD* mode, bool collecting)
{
    const auto end = endOfHandle(handle);
    if (!end)
        return ERROR_INVALID_HANDLE;
    if (!end->maySetMode())
        return ERROR_ACCESS_DENIED;
    // Collecting is for pipes between two machines.
    if (collecting)
        return ERROR_INVALID_PARAMETER;
    return mode ? end->setReadMode(*mode) : ERROR_SUCCESS;
}

DWORD read(HANDLE handle, char* buffer, DWORD size, DWORD& count)
{
    const auto end = endOfHandle(handle);
    if (!end)
        return ERROR_INVALID_HANDLE;
    if (!end->mayRead())
        return ERROR_ACCESS_DENIED;
    if (!buffer && size > 0)
        return ERROR_NOACCESS;
    std::shared_ptr<Channel> channel;
    const DWORD error = end->channel(channel);
    return error != ERROR_SUCCESS ? error
                                  : channel->read(end->readsByMessage(), buffer, size, count);
}

DWORD write(HANDLE handle, const char* data, DWORD size)
{
    const auto end = endOfHandle(handle);
    if (!end)
        return ERROR_INVALID_HANDLE;
    if (!end->mayWrite())
        return ERROR_ACCESS_DENIED;
    if (!data && size > 0)
        return ERROR_NOACCESS;
    std::shared_ptr<Channel> channel;
    const DWORD error = end->channel(channel);
    return error != ERROR_SUCCESS ? error : channel->write(data, size);
}

} // namespace
} // namespace pavo::posix

using namespace pavo::posix;

BOOL CloseHandle(HANDLE handle)
{
    return conclude(forgetHandle(handle) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

BOOL SetNamedPipeHandleState(HANDLE handle, LPDWORD mode, LPDWORD maxCollectionCount,
                             LPDWORD collectDataTimeout)
{
    return conclude(setState(handle, mode, maxCollectionCount || collectDataTimeout));
}

BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped)
{
    if (!read || overlapped)
        return conclude(ERROR_INVALID_PARAMETER);
    *read = 0;
    return conclude(pavo::posix::read(handle, static_cast<char*>(buffer), size, *read));
}

BOOL WriteFile(HANDLE handle, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED overlapped)
{
    if (!written || overlapped)
        return conclude(ERROR_INVALID_PARAMETER);
    *written = 0;
    const DWORD error = pavo::posix::write(handle, static_cast<const char*>(data), size);
    if (error == ERROR_SUCCESS)
        *written = size;
    return conclude(error);
}
