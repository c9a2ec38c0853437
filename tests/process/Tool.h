#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// How a tool of this build ended.
struct ToolResult
{
    int exitCode;
    QByteArray output;
    QByteArray errors;
};

/// Runs a tool to its end with `input` as its standard input. Exit code -1: it did not end, or
/// crashed.
ToolResult runTool(const QString& name, const QStringList& arguments, const QByteArray& input = {});

/// The sample workbench, as a command for pavo-host, in an installation of this process's own.
QStringList headlessWorkbench();

/// Script lines for pavo-host.
class ScriptRun
{
public:
    explicit ScriptRun(const QByteArray& lines);

    QString fileName() const { return m_folder.filePath(QStringLiteral("script.txt")); }
    /// Plays them against `workbench`, with more options of the host, which knows the installation
    /// of headlessWorkbench().
    ToolResult play(const QStringList& workbench, const QStringList& options = {}) const;

private:
    QTemporaryDir m_folder;
};

/// A host and the sample workbench send each other this and that; the workbench logs all of it to
/// `logFile`. Ends with exit code 0 if all of it has arrived.
ToolResult workWithLog(const QString& logFile);
