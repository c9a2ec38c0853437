#include "tools/pavo-host/HostSession.h"

#include "tools/pavo-host/ScriptLines.h"
#include "tools/support/Lines.h"

#include <QMetaObject>

#include <utility>

HostSession::HostSession(QString name, const QString& pipeName, TimeLine& timeLine)
    : m_name(std::move(name))
    , m_timeLine(timeLine)
    , m_toWorkbench(pipeName + QStringLiteral("-to-workbench"))
    , m_fromWorkbench(pipeName + QStringLiteral("-from-workbench"))
{
    connect(&m_toWorkbench, &PipeWriter::opened, this, [this] {
        note(Event::Host, QStringLiteral("the workbench has opened the pipe it reads"));
    });
    connect(&m_toWorkbench, &PipeWriter::written, this, [this] {
        --m_unwritten;
        Q_EMIT changed();
    });
    connect(&m_toWorkbench, &PipeWriter::failed, this, [this] {
        m_writeFailed = true;
        Q_EMIT changed();
    });
    connect(&m_fromWorkbench, &PipeReader::opened, this, [this] {
        note(Event::Host, QStringLiteral("the workbench has opened the pipe it writes"));
    });
    connect(&m_fromWorkbench, &PipeReader::received, this, &HostSession::receive);
    connect(&m_fromWorkbench, &PipeReader::ended, this, [this] {
        // Of a launched workbench the end of its process counts.
        if (!m_launched)
            end();
    });
    connect(&m_process, &QProcess::readyReadStandardOutput, this,
            [this] { takeOutput(Event::Output, false); });
    connect(&m_process, &QProcess::readyReadStandardError, this,
            [this] { takeOutput(Event::Log, false); });
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &HostSession::processFinished);
    if (hasPipes()) {
        m_toWorkbench.start();
        m_fromWorkbench.start();
    }
}

HostSession::~HostSession()
{
    m_process.disconnect(this);
    m_process.kill();
    m_process.waitForFinished(-1);
}

QString HostSession::argument() const
{
    return QStringLiteral("pipe?param=%1&%2")
        .arg(m_toWorkbench.fullName(), m_fromWorkbench.fullName());
}

bool HostSession::launch(QStringList command, const QStringList& options)
{
    command << options << argument();
    note(Event::Host, QStringLiteral("launches %1").arg(command.join(QLatin1Char(' '))),
         ScriptLines::launched(m_name, options));
    m_process.setProgram(command.takeFirst());
    m_process.setArguments(command);
    m_process.start();
    m_launched = m_process.waitForStarted(-1);
    return m_launched;
}

QString HostSession::startProblem() const
{
    return QStringLiteral("cannot start %1: %2").arg(m_process.program(), m_process.errorString());
}

void HostSession::send(const QByteArray& bytes)
{
    QByteArrayList pieces{bytes};
    if (std::exchange(m_splitNext, false)) {
        pieces.clear();
        for (const char byte : bytes)
            pieces << QByteArray(1, byte);
    }
    const bool isSplit = pieces.size() > 1;
    Traffic message(bytes);
    message.text += QLatin1String(isSplit ? " (byte by byte)" : "");
    noteMessage(Event::Sent, message,
                QLatin1String(isSplit ? "split\n" : "") + ScriptLines::sent(bytes));
    ++m_unwritten;
    m_toWorkbench.write(pieces);
}

void HostSession::writeToStandardInput(const QString& line)
{
    note(Event::Host, QStringLiteral("tells the workbench: %1").arg(line),
         QStringLiteral("workbench %1").arg(line));
    m_process.write(line.toUtf8() + '\n');
}

std::optional<Traffic> HostSession::takeMessage()
{
    if (m_messages.empty())
        return std::nullopt;
    Traffic message = std::move(m_messages.front());
    m_messages.pop_front();
    return message;
}

bool HostSession::takeLine(const QString& text)
{
    for (QStringList* lines : {&m_output.lines, &m_log.lines}) {
        for (int index = 0; index < lines->size(); ++index) {
            if (lines->at(index).contains(text)) {
                lines->erase(lines->begin(), lines->begin() + index + 1);
                return true;
            }
        }
    }
    return false;
}

QString HostSession::endText() const
{
    const QString who = m_name.isEmpty() ? QStringLiteral("the workbench")
                                         : QStringLiteral("workbench %1").arg(m_name);
    return who + QLatin1Char(' ') + howItEnded();
}

void HostSession::close()
{
    if (std::exchange(m_closed, true))
        return;
    expectEnd();
    note(Event::Host, QStringLiteral("goes away"), QStringLiteral("close"));
    m_toWorkbench.close();
    m_fromWorkbench.close();
}

void HostSession::note(Event::Kind kind, const QString& text, const QString& script)
{
    m_timeLine.add({kind, text, m_name, {}, QJsonValue::Undefined, script});
}

void HostSession::noteMessage(Event::Kind kind, const Traffic& message, const QString& script)
{
    m_timeLine.add({kind, message.text, m_name, message.name, message.arguments, script});
}

void HostSession::receive(const QByteArray& bytes)
{
    const Traffic message(bytes);
    // It depends on chance which of the last ones still come after the host has gone.
    noteMessage(Event::Received, message, m_closed ? QString() : ScriptLines::received(message));
    if (!m_closed)
        m_messages.push_back(message);
    Q_EMIT changed();
}

void HostSession::takeOutput(Event::Kind channel, bool all)
{
    Output& output = channel == Event::Output ? m_output : m_log;
    output.buffer += channel == Event::Output ? m_process.readAllStandardOutput()
                                              : m_process.readAllStandardError();
    const QStringList lines = all ? takeAllLines(output.buffer) : takeLines(output.buffer);
    for (const QString& line : lines)
        note(channel, line);
    output.lines += lines;
    if (!lines.isEmpty())
        Q_EMIT changed();
}

void HostSession::processFinished()
{
    takeOutput(Event::Output, true);
    takeOutput(Event::Log, true);
    m_fromWorkbench.drain();
    // Queued behind the messages that the pipe has just delivered.
    QMetaObject::invokeMethod(this, &HostSession::end, Qt::QueuedConnection);
}

void HostSession::end()
{
    m_ended = true;
    QString expectation = QStringLiteral("expect-exit");
    if (m_launched)
        expectation += QStringLiteral(" %1").arg(exitCode());
    note(Event::Host, QStringLiteral("the workbench ") + howItEnded(),
         hasCrashed() ? QString() : expectation);
    Q_EMIT changed();
}

QString HostSession::howItEnded() const
{
    if (!m_launched)
        return QStringLiteral("has gone");
    if (hasCrashed())
        return QStringLiteral("crashed");
    return QStringLiteral("ended with exit code %1").arg(exitCode());
}
