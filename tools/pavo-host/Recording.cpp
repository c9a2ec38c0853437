#include "tools/pavo-host/Recording.h"

#include <QFileInfo>

namespace {

/// Less than this is how long the host itself takes, or a script that leaves no time.
constexpr qint64 kLeastPauseMs = 10;

bool starts(const QString& text, const char* beginning)
{
    return text.startsWith(QLatin1String(beginning));
}

} // namespace

bool Recording::open(const QString& fileName, QString& problem)
{
    m_file.setFileName(fileName);
    // What is no file, a terminal for one, is not this program's to change.
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
        (!QFileInfo(m_file).isFile() ||
         m_file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)))
        return true;
    problem = QStringLiteral("cannot write %1: %2").arg(fileName, m_file.errorString());
    return false;
}

void Recording::add(const Event& event, qint64 elapsedMs)
{
    if (event.script.isEmpty())
        return;
    // The workbench takes its own time: only the host's is kept.
    if (!starts(event.script, "expect") && elapsedMs - m_lastMs >= kLeastPauseMs)
        write(QStringLiteral("wait %1").arg(elapsedMs - m_lastMs));
    m_lastMs = elapsedMs;
    if (event.workbench != m_workbench && !starts(event.script, "start"))
        write(QStringLiteral("with %1").arg(event.workbench).trimmed());
    m_workbench = event.workbench;
    write(event.script);
}

void Recording::write(const QString& line)
{
    m_file.write(line.toUtf8() + '\n');
    m_file.flush();
}
