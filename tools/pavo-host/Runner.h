#pragma once

#include "tools/pavo-host/Step.h"

#include <QObject>
#include <QTimer>

#include <deque>
#include <optional>

class Sessions;
class TimeLine;

/// Takes one step after the other, each with a deadline, and ends with the first that fails.
class Runner : public QObject
{
    Q_OBJECT

public:
    Runner(Sessions& sessions, TimeLine& timeLine, int timeoutMs);

    /// Lets failing steps be told and forgotten, as suits a prompt. The workbench's unexpected end
    /// still ends everything.
    void setForgiving() { m_forgiving = true; }

    void add(Step step);
    /// Nothing more is added; ends with the farewell.
    void finish();

Q_SIGNALS:
    void done(bool fine);

private:
    void advance();
    bool takeStep();
    void stepFailed(const QString& problem);
    void fail(const QString& place, const QString& problem);

    Sessions& m_sessions;
    TimeLine& m_timeLine;
    const int m_timeoutMs;
    bool m_forgiving = false;
    bool m_finishing = false;
    bool m_takingLeave = false;
    bool m_done = false;
    std::deque<Step> m_steps;
    std::optional<Step> m_current;
    QTimer m_deadline;
};
