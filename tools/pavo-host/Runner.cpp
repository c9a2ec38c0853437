#include "tools/pavo-host/Runner.h"

#include "tools/pavo-host/Complain.h"
#include "tools/pavo-host/HostSession.h"
#include "tools/pavo-host/Script.h"

#include <utility>

Runner::Runner(HostSession& session, int timeoutMs)
    : m_session(session)
    , m_timeoutMs(timeoutMs)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        if (!takeStep())
            stepFailed(QStringLiteral("waited in vain for %1").arg(m_current->awaited));
        advance();
    });
    // Queued, since steps change the session while they are being taken.
    connect(&session, &HostSession::changed, this, &Runner::advance, Qt::QueuedConnection);
}

void Runner::add(Step step)
{
    m_steps.push_back(std::move(step));
    QMetaObject::invokeMethod(this, &Runner::advance, Qt::QueuedConnection);
}

void Runner::finish()
{
    m_finishing = true;
    for (Step& step : Script::farewell())
        add(std::move(step));
}

void Runner::advance()
{
    while (!m_done && (m_current || !m_steps.empty())) {
        if (!takeStep())
            return;
    }
    if (m_done)
        return;
    if (m_finishing) {
        m_done = true;
        Q_EMIT done(true);
    } else if (m_session.hasEndedUnexpectedly()) {
        fail(QString(), m_session.endText());
    } else {
        Q_EMIT idle();
    }
}

/// Whether the present step is over.
bool Runner::takeStep()
{
    if (!m_current) {
        m_current = std::move(m_steps.front());
        m_steps.pop_front();
        if (m_current->start)
            m_current->start(m_session);
        m_deadline.start(m_timeoutMs + m_current->extraMs);
    }
    const Verdict verdict = m_current->check(m_session);
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
    if (!m_current->needsWorkbench || !m_session.hasEnded())
        return false;
    stepFailed(
        QStringLiteral("%1, there will be no %2").arg(m_session.endText(), m_current->awaited));
    return true;
}

void Runner::stepFailed(const QString& problem)
{
    m_deadline.stop();
    fail(std::exchange(m_current, std::nullopt)->place, problem);
}

void Runner::fail(const QString& place, const QString& problem)
{
    complain(place, problem);
    if (m_forgiving && !m_finishing && !m_session.hasEndedUnexpectedly())
        return;
    m_done = true;
    Q_EMIT done(false);
}
