// A host in C++. It makes both pipes, starts the workbench that its arguments name, logs an account
// in, opens a conversation, changes the presence and goes away:
//
//     example-host WORKBENCH [ARGUMENTS...]
//
// It does one thing after the other, so it hangs if the workbench does, though not if that ends. A
// host for every day reads on a thread of its own. It is built in the library's tree, whose
// platform/ takes the place of Windows elsewhere.

#include "platform/PipeSecurity.h"
#include "platform/UniqueHandle.h"
#include "platform/Win32.h" // On Windows this is <windows.h>.

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QtEndian>

#include <cstdio>
#include <thread>

namespace {

/// The host's end of a pipe for one workbench.
class Pipe
{
public:
    Pipe(const QString& name, DWORD direction)
        : m_name(QStringLiteral("\\\\.\\pipe\\") + name)
        , m_clientAccess(direction == PIPE_ACCESS_OUTBOUND ? GENERIC_READ : GENERIC_WRITE)
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
    /// Comes and goes as a workbench. Any thread.
    void visit() const
    {
        const HANDLE visitor = CreateFileA(m_name.toUtf8().constData(), m_clientAccess, 0, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (visitor != INVALID_HANDLE_VALUE)
            CloseHandle(visitor);
    }

private:
    static constexpr int kSize = 4096; // No message is longer.

    const QString m_name;
    const DWORD m_clientAccess;
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

/// The JSON text of a frame. One that is not all ASCII comes shorter than its length says; what is
/// missing stands behind the arguments and is the same in every message.
QByteArray textOf(const QByteArray& frame)
{
    const QByteArray end = R"(","sequence":0,"source":"lx"})";
    if (frame.size() < 4)
        return {};
    const QByteArray text = frame.mid(4);
    const qint64 missing = qint64{qFromLittleEndian<quint32>(frame.constData())} - text.size();
    return missing > 0 && missing <= end.size() ? text + end.right(static_cast<int>(missing))
                                                : text;
}

/// Reads until a message of each name has come, in whichever order; false when the workbench has
/// gone. What is no message is passed over.
bool await(Pipe& pipe, QList<QByteArray> names)
{
    while (!names.isEmpty()) {
        const QByteArray frame = pipe.read();
        if (frame.isEmpty())
            return false;
        const QJsonDocument message = QJsonDocument::fromJson(textOf(frame));
        if (!message.isObject())
            continue;
        const QByteArray name = message[QStringLiteral("name")].toString().toUtf8();
        const QJsonArray arguments = message[QStringLiteral("arguments")].toArray();
        show('<', name, QJsonDocument(arguments).toJson(QJsonDocument::Compact));
        names.removeOne(name);
    }
    return true;
}

bool converse(Pipe& toWorkbench, Pipe& fromWorkbench)
{
    return toWorkbench.awaitWorkbench() && fromWorkbench.awaitWorkbench() &&
           send(toWorkbench, "Login", R"(["waiter",false,1,"desktop","","secret"])") &&
           await(fromWorkbench, {"StartupCompleted", "ChangeStatusCallback"}) &&
           send(toWorkbench, "OpenLXWindow", R"(["customer-7",3,"order-42"])") &&
           send(toWorkbench, "ChangeStatus", "[2]") &&
           await(fromWorkbench, {"ChangeStatusCallback"});
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
    bool fine = false;
    std::thread conversation([&] {
        fine = converse(toWorkbench, fromWorkbench);
        if (!fine)
            std::fputs("example-host: the workbench has gone\n", stderr);
        toWorkbench.close(); // The workbench leaves when its host does.
    });
    workbench.waitForFinished(-1);
    // A conversation that still waits for it goes on and finds that it has gone.
    toWorkbench.visit();
    fromWorkbench.visit();
    conversation.join();
    return fine && workbench.exitStatus() == QProcess::NormalExit ? workbench.exitCode() : 1;
}
