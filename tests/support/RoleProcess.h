#pragma once

#include "tests/support/Wait.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <string>

/// What a test executable does when it is started as a child: `run` gets the arguments after the
/// role's name and returns the exit code; there is no application yet. Registered by constructing
/// it at namespace scope.
class Role
{
public:
    using Run = int (*)(const QStringList& arguments);
    Role(const char* name, Run run);

    /// Runs the role that the command line asks for; false when it asks for none.
    static bool runAsAsked(int argc, char** argv, int& exitCode);
};

/// In a role: talks to the process that has started this one. An empty line means that it has gone.
void sayToParent(const std::string& line);
std::string nextLineFromParent();

/// The path of another executable of this build, which lies beside the running one.
QString siblingExecutable(const QString& name);

/// Starts a program and returns whether it runs. Wine fails now and then with an internal error to
/// start one that there is: it is tried again.
bool startProgram(QProcess& process, const QString& program, const QStringList& arguments);

/// This executable once more, in a role. Killed at destruction.
class RoleProcess
{
public:
    RoleProcess(const char* role, const QStringList& arguments);
    ~RoleProcess();
    RoleProcess(const RoleProcess&) = delete;
    RoleProcess& operator=(const RoleProcess&) = delete;

    /// The next line it says; empty when none comes.
    std::string nextLine(int deadlineMs = kDeadlineMs);
    void say(const std::string& line);
    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }
    void kill();
    /// Its exit code; -1 when it does not end or was killed.
    int waitForExit(int deadlineMs = kDeadlineMs);

private:
    QProcess m_process;
};
