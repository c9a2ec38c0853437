#pragma once

#include "tools/pavo-host/PipeReader.h"
#include "tools/pavo-host/PipeWriter.h"
#include "tools/pavo-host/TimeLine.h"
#include "tools/pavo-host/Traffic.h"

#include <QByteArray>
#include <QObject>
#include <QProcess>
#include <QStringList>

#include <deque>
#include <optional>

/// The host of one workbench: both pipes, and the workbench if it was launched on them. Everything
/// that happens goes into the time line; what has happened so far is asked for after changed().
class HostSession : public QObject
{
    Q_OBJECT

public:
    /// Creates the pipes, unless somebody else has their names. The time line tells workbenches
    /// apart by `name`, which may be empty.
    HostSession(QString name, const QString& pipeName, TimeLine& timeLine);
    /// Ends a workbench that is still there.
    ~HostSession() override;

    bool hasPipes() const { return m_toWorkbench.isOpen() && m_fromWorkbench.isOpen(); }
    /// What a workbench has to be launched with.
    QString argument() const;
    /// Launches a workbench with more options and, as the last one, argument(); false when it
    /// cannot be started.
    bool launch(QStringList command, const QStringList& options = {});
    /// Why it could not.
    QString startProblem() const;
    bool wasLaunched() const { return m_launched; }
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    TimeLine& timeLine() { return m_timeLine; }

    /// Has the next send() write single bytes.
    void splitNext() { m_splitNext = true; }
    /// Writes `bytes` in one go, in the background.
    void send(const QByteArray& bytes);
    /// Whether everything sent has been written.
    bool isWritten() const { return m_unwritten == 0; }
    /// Whether the workbench can be written to at all.
    bool canWrite() const { return !m_closed && !m_writeFailed; }

    void writeToStandardInput(const QString& line);

    /// The oldest message of the workbench that was not taken yet.
    std::optional<Traffic> takeMessage();
    /// Takes the next line of the workbench's output or of its log that contains `text`, with all
    /// lines before it. False when there is none yet.
    bool takeLine(const QString& text);

    /// From now on the workbench may end.
    void expectEnd() { m_endExpected = true; }
    bool hasEnded() const { return m_ended; }
    bool hasEndedUnexpectedly() const { return m_ended && !m_endExpected; }
    bool hasCrashed() const { return m_process.exitStatus() == QProcess::CrashExit; }
    int exitCode() const { return m_process.exitCode(); }
    /// Which workbench ended, and how.
    QString endText() const;

    /// The host goes away.
    void close();

Q_SIGNALS:
    void changed();

private:
    void note(Event::Kind kind, const QString& text, const QString& script = {});
    void noteMessage(Event::Kind kind, const Traffic& message, const QString& script);
    void receive(const QByteArray& bytes);
    void takeOutput(Event::Kind channel, bool all);
    void processFinished();
    void end();
    QString howItEnded() const;

    /// The lines of one channel that no expectation has passed yet.
    struct Output
    {
        QByteArray buffer;
        QStringList lines;
    };

    const QString m_name;
    TimeLine& m_timeLine;
    PipeWriter m_toWorkbench;
    PipeReader m_fromWorkbench;
    QProcess m_process;
    Output m_output;
    Output m_log;
    std::deque<Traffic> m_messages;
    int m_unwritten = 0;
    bool m_splitNext = false;
    bool m_writeFailed = false;
    bool m_closed = false;
    bool m_launched = false;
    bool m_ended = false;
    bool m_endExpected = false;
};
