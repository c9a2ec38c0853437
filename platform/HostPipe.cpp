#include "platform/HostPipe.h"

#include "platform/PipeSecurity.h"

namespace pavo {

namespace {

constexpr DWORD kBufferSize = 64 * 1024;

} // namespace

HostPipe::HostPipe(const QString& name, Direction direction, Kind kind)
    : m_fullName(QStringLiteral("\\\\.\\pipe\\") + name)
{
    const DWORD access =
        direction == Direction::HostWrites ? PIPE_ACCESS_OUTBOUND : PIPE_ACCESS_INBOUND;
    const DWORD mode = kind == Kind::Message ? PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE
                                             : PIPE_TYPE_BYTE | PIPE_READMODE_BYTE;
    PipeSecurity security;
    const HANDLE handle =
        CreateNamedPipeA(m_fullName.toUtf8().constData(), access | FILE_FLAG_FIRST_PIPE_INSTANCE,
                         mode | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, kBufferSize, kBufferSize,
                         0, security.currentUserOnly());
    if (handle != INVALID_HANDLE_VALUE)
        m_handle.reset(handle);
}

bool HostPipe::awaitClient()
{
    return ConnectNamedPipe(m_handle.get(), nullptr) || GetLastError() == ERROR_PIPE_CONNECTED;
}

void HostPipe::dropClient()
{
    DisconnectNamedPipe(m_handle.get());
}

bool HostPipe::write(const QByteArray& bytes)
{
    DWORD written = 0;
    return WriteFile(m_handle.get(), bytes.constData(), static_cast<DWORD>(bytes.size()), &written,
                     nullptr);
}

bool HostPipe::read(QByteArray& message)
{
    message.resize(static_cast<int>(kBufferSize));
    DWORD delivered = 0;
    const bool ok = ReadFile(m_handle.get(), message.data(), kBufferSize, &delivered, nullptr) != 0;
    message.resize(static_cast<int>(delivered));
    return ok;
}

} // namespace pavo
