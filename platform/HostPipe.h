#pragma once

#include "platform/UniqueHandle.h"

#include <QByteArray>
#include <QString>

namespace pavo {

/// The host's end of one pipe, for tools and tests: a single instance that only the current user of
/// this machine can open. Calls block; another thread can cancel them with a ThreadCanceller.
class HostPipe
{
public:
    enum class Direction { HostWrites, HostReads };
    enum class Kind { Message, Byte };

    /// Creates the pipe "\\.\pipe\NAME". Check isOpen(): it fails when another host has the name.
    HostPipe(const QString& name, Direction direction, Kind kind = Kind::Message);

    bool isOpen() const { return m_handle != nullptr; }
    /// The name that the workbench opens.
    QString fullName() const { return m_fullName; }

    /// Waits until a client has opened the pipe.
    bool awaitClient();
    /// Gives up the present client, so that awaitClient() can wait for the next one.
    void dropClient();

    /// Writes all of `bytes`, as one message. Blocks while the client does not read.
    bool write(const QByteArray& bytes);
    /// Reads one message of up to 64 KiB; false when the client has gone or the call was cancelled.
    bool read(QByteArray& message);

    /// No thread may be inside another call.
    void close() { m_handle.reset(); }

private:
    QString m_fullName;
    UniqueHandle m_handle;
};

} // namespace pavo
