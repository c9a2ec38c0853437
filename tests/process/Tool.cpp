#include "tests/process/Tool.h"

#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

namespace {

QStringList installation()
{
    return {QStringLiteral("--application"),
            QStringLiteral("pavo-test-%1").arg(QCoreApplication::applicationPid())};
}

/// Longer than a tool waits for anything, and than a script lasts.
constexpr int kToolDeadlineMs = 10 * kDeadlineMs;

} // namespace

ToolResult runTool(const QString& name, const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    startProgram(process, siblingExecutable(name), arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(kToolDeadlineMs);
    const bool normally = ended && process.exitStatus() == QProcess::NormalExit;
    return {normally ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

QStringList headlessWorkbench()
{
    return QStringList{siblingExecutable(QStringLiteral("pavo-workbench")),
                       QStringLiteral("--headless")} +
           installation();
}

ScriptRun::ScriptRun(const QByteArray& lines)
{
    QFile file(fileName());
    file.open(QIODevice::WriteOnly);
    file.write(lines);
}

ToolResult ScriptRun::play(const QStringList& workbench, const QStringList& options) const
{
    return runTool(QStringLiteral("pavo-host"),
                   installation() + options +
                       QStringList{QStringLiteral("--script"), fileName(), QStringLiteral("--")} +
                       workbench);
}

ToolResult workWithLog(const QString& logFile)
{
    const ScriptRun script("expect StartupCompleted\n"
                           "OpenBaseInfoSettingWindow\n"
                           "expect-workbench open the base-information settings\n"
                           "workbench unread 4\n"
                           "expect UnreadMessageChanged [4]\n"
                           "workbench quit\n"
                           "expect-exit 0\n");
    return script.play(headlessWorkbench()
                       << QStringLiteral("--log") << QStringLiteral("debug:") + logFile);
}
