#include "tools/pavo-host/Runner.h"

#include "tools/pavo-host/Script.h"
#include "tools/pavo-host/Sessions.h"
#include "tools/pavo-host/TimeLine.h"

#include <utility>

Runner::Runner(Sessions& sessions, TimeLine& timeLine, int timeoutMs)
    : m_sessions(sessions)
    , m_timeLine(timeLine)
    , m_timeoutMs(timeoutMs)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        if (!takeStep())
            stepFailed(QStringLiteral("waited in vain for %1").arg(m_current->awaited));
        advance();
    });
    // Queued, since steps change the session while they are being taken.
    connect(&sessions, &Sessions::changed, this, &Runner::advance, Qt::QueuedConnection);
}

void Runner::add(Step step)
{
    m_steps.push_back(std::move(step));
    QMetaObject::invokeMethod(this, &Runner::advance, Qt::QueuedConnection);
}

void Runner::finish()
{
    m_finishing = true;
    QMetaObject::invokeMethod(this, &Runner::advance, Qt::QueuedConnection);
}

void Runner::advance()
{
    while (!m_done && (m_current || !m_steps.empty())) {
        if (!takeStep())
            return;
    }
    if (m_done)
        return;
    if (m_takingLeave) {
        m_done = true;
        Q_EMIT done(true);
    } else if (m_finishing) {
        // Only now it is known who is there.
        m_takingLeave = true;
        for (Step& step : Script::farewell(m_sessions.names()))
            add(std::move(step));
    } else if (const HostSession* const ended = m_sessions.endedUnexpectedly()) {
        fail(QString(), ended->endText());
    }
}

/// Whether the present step is over.
bool Runner::takeStep()
{
    if (!m_current) {
        m_current = std::move(m_steps.front());
        m_steps.pop_front();
        QString problem;
        if (m_current->arrange && !m_current->arrange(m_sessions, problem)) {
            stepFailed(problem);
            return true;
        }
        if (m_current->start)
            m_current->start(m_sessions.current());
        m_deadline.start(m_timeoutMs + m_current->extraMs);
    }
    HostSession& session = m_sessions.current();
    const Verdict verdict = m_current->check(session);
    switch (verdict.state) {
    case Verdict::Met:
        m_deadline.stop();
        m_current.reset();
        return true;
    case Verdict::Failed:
        stepFailed(verdict.problem);
        return true;
    case Verdict::Waiting:
        break;
    }
    if (!m_current->needsWorkbench)
        return false;
    const QString& awaited = m_current->awaited;
    const HostSession* const ended =
        session.hasEnded() && !awaited.isEmpty() ? &session : m_sessions.endedUnexpectedly();
    if (!ended)
        return false;
    stepFailed(awaited.isEmpty()
                   ? ended->endText()
                   : QStringLiteral("%1, there will be no %2").arg(ended->endText(), awaited));
    return true;
}

void Runner::stepFailed(const QString& problem)
{
    m_deadline.stop();
    fail(std::exchange(m_current, std::nullopt)->place, problem);
}

void Runner::fail(const QString& place, const QString& problem)
{
    m_timeLine.complain(place, problem);
    if (m_forgiving && !m_finishing && !m_sessions.endedUnexpectedly())
        return;
    m_done = true;
    Q_EMIT done(false);
}
