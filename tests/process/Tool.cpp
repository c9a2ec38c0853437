#include "tests/process/Tool.h"

#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <QFile>
#include <QProcess>

ToolResult runTool(const QString& name, const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    process.start(siblingExecutable(name), arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(kDeadlineMs);
    const bool normally = ended && process.exitStatus() == QProcess::NormalExit;
    return {normally ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

QStringList headlessWorkbench()
{
    return {siblingExecutable(QStringLiteral("pavo-workbench")), QStringLiteral("--headless")};
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
                   options +
                       QStringList{QStringLiteral("--script"), fileName(), QStringLiteral("--")} +
                       workbench);
}
