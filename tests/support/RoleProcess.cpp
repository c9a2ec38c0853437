#include "tests/support/RoleProcess.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <cstdio>
#include <iostream>
#include <map>

namespace {

constexpr int kStarts = 3;

std::map<QString, Role::Run>& roles()
{
    static std::map<QString, Role::Run> roles;
    return roles;
}

QString roleOption()
{
    return QStringLiteral("--role");
}

} // namespace

Role::Role(const char* name, Run run)
{
    if (!roles().emplace(QString::fromLatin1(name), run).second)
        qFatal("two roles are called %s", name);
}

bool Role::runAsAsked(int argc, char** argv, int& exitCode)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (arguments.size() < 2 || arguments[0] != roleOption())
        return false;
    exitCode = roles().at(arguments[1])(arguments.mid(2));
    return true;
}

void sayToParent(const std::string& line)
{
    std::puts(line.c_str());
    std::fflush(stdout);
}

std::string nextLineFromParent()
{
    std::string line;
    std::getline(std::cin, line);
    return line;
}

QString siblingExecutable(const QString& name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
}

bool startProgram(QProcess& process, const QString& program, const QStringList& arguments)
{
    for (int i = 0; i < kStarts; ++i) {
        process.start(program, arguments);
        if (process.waitForStarted(kDeadlineMs))
            return true;
    }
    return false;
}

RoleProcess::RoleProcess(const char* role, const QStringList& arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    startProgram(m_process, QCoreApplication::applicationFilePath(),
                 QStringList{roleOption(), QString::fromLatin1(role)} + arguments);
}

RoleProcess::~RoleProcess()
{
    kill();
}

std::string RoleProcess::nextLine(int deadlineMs)
{
    const QDeadlineTimer deadline(deadlineMs);
    while (!m_process.canReadLine()) {
        if (m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            continue;
        if (!isRunning())
            std::fprintf(stderr, "A process is waited for that has ended: %s, exit code %d\n",
                         qUtf8Printable(m_process.errorString()), m_process.exitCode());
        return {};
    }
    return m_process.readLine().trimmed().toStdString();
}

void RoleProcess::say(const std::string& line)
{
    m_process.write((line + '\n').c_str());
    m_process.waitForBytesWritten(kDeadlineMs);
}

void RoleProcess::kill()
{
    m_process.kill();
    m_process.waitForFinished(kDeadlineMs);
}

int RoleProcess::waitForExit(int deadlineMs)
{
    const bool ended =
        m_process.state() == QProcess::NotRunning || m_process.waitForFinished(deadlineMs);
    return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
