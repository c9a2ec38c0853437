// A host in C++. It makes both pipes, starts the workbench that its arguments name, logs an account
// in, opens a conversation, changes the presence and goes away:
//
//     example-host WORKBENCH [ARGUMENTS...]
//
// It does one thing after the other, so it hangs if the workbench does. A host for every day reads
// on a thread of its own.

#include "platform/PipeSecurity.h"
#include "platform/UniqueHandle.h"
#include "platform/Win32.h" // On Windows this is <windows.h>.

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtEndian>

#include <cstdio>

namespace {

/// The host's end of a pipe for one workbench.
class Pipe
{
public:
    Pipe(const QString& name, DWORD direction)
        : m_name(QStringLiteral("\\\\.\\pipe\\") + name)
    {
        pavo::PipeSecurity security;
        const HANDLE handle = CreateNamedPipeA(
            m_name.toUtf8().constData(), direction | FILE_FLAG_FIRST_PIPE_INSTANCE,
            PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1,
            kSize, kSize, 0, security.currentUserOnly());
        if (handle != INVALID_HANDLE_VALUE)
            m_handle.reset(handle);
    }

    QString name() const { return m_name; }
    bool awaitWorkbench()
    {
        return m_handle && (ConnectNamedPipe(m_handle.get(), nullptr) ||
                            GetLastError() == ERROR_PIPE_CONNECTED);
    }
    bool write(const QByteArray& bytes)
    {
        DWORD written = 0;
        return WriteFile(m_handle.get(), bytes.constData(), static_cast<DWORD>(bytes.size()),
                         &written, nullptr);
    }
    /// One message; empty when the workbench has gone.
    QByteArray read()
    {
        QByteArray message(kSize, '\0');
        DWORD size = 0;
        if (!ReadFile(m_handle.get(), message.data(), kSize, &size, nullptr))
            return {};
        message.truncate(static_cast<int>(size));
        return message;
    }
    void close() { m_handle.reset(); }

private:
    static constexpr int kSize = 4096; // No message is longer.

    QString m_name;
    pavo::UniqueHandle m_handle;
};

void show(char direction, const QByteArray& name, const QByteArray& arguments)
{
    std::printf("%c %s %s\n", direction, name.constData(), arguments.constData());
    std::fflush(stdout);
}

/// `arguments` is a JSON array.
bool send(Pipe& pipe, const char* name, const char* arguments)
{
    show('>', name, arguments);
    const QByteArray text = QByteArray(R"({"name":")") + name +
                            R"(","source":"host","sequence":0,"arguments":)" + arguments + '}';
    QByteArray frame(4, '\0');
    qToLittleEndian(static_cast<quint32>(text.size()), frame.data());
    return pipe.write(frame + text);
}

/// Reads until the message of that name has come; false when the workbench has gone.
bool await(Pipe& pipe, const char* name)
{
    for (;;) {
        const QByteArray frame = pipe.read();
        if (frame.isEmpty())
            return false;
        const QJsonObject message = QJsonDocument::fromJson(frame.mid(4)).object();
        const QByteArray came = message.value(QStringLiteral("name")).toString().toUtf8();
        const QJsonArray arguments = message.value(QStringLiteral("arguments")).toArray();
        show('<', came, QJsonDocument(arguments).toJson(QJsonDocument::Compact));
        if (came == name)
            return true;
    }
}

bool converse(Pipe& toWorkbench, Pipe& fromWorkbench)
{
    return toWorkbench.awaitWorkbench() && fromWorkbench.awaitWorkbench() &&
           await(fromWorkbench, "StartupCompleted") &&
           send(toWorkbench, "Login", R"(["waiter",false,1,"desktop","","secret"])") &&
           await(fromWorkbench, "ChangeStatusCallback") &&
           send(toWorkbench, "OpenLXWindow", R"(["customer-7",3,"order-42"])") &&
           send(toWorkbench, "ChangeStatus", "[2]") && await(fromWorkbench, "ChangeStatusCallback");
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QStringList command = QCoreApplication::arguments().mid(1);
    if (command.isEmpty()) {
        std::fputs("usage: example-host WORKBENCH [ARGUMENTS...]\n", stderr);
        return 2;
    }
    const QString name = QStringLiteral("example-host-%1").arg(QCoreApplication::applicationPid());
    Pipe toWorkbench(name + QStringLiteral("-to"), PIPE_ACCESS_OUTBOUND);
    Pipe fromWorkbench(name + QStringLiteral("-from"), PIPE_ACCESS_INBOUND);

    QProcess workbench;
    workbench.setProcessChannelMode(QProcess::ForwardedChannels);
    const QString program = command.takeFirst();
    command << QStringLiteral("pipe?param=%1&%2").arg(toWorkbench.name(), fromWorkbench.name());
    workbench.start(program, command);
    if (!workbench.waitForStarted()) {
        std::fputs("example-host: the workbench cannot be started\n", stderr);
        return 1;
    }
    const bool fine = converse(toWorkbench, fromWorkbench);
    // The workbench leaves when its host does.
    toWorkbench.close();
    workbench.waitForFinished();
    return fine && workbench.exitStatus() == QProcess::NormalExit ? workbench.exitCode() : 1;
}
