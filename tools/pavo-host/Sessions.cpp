#include "tools/pavo-host/Sessions.h"

#include <algorithm>
#include <utility>

Sessions::Sessions(QString pipeName, QStringList command, QString application, TimeLine& timeLine)
    : m_pipeName(std::move(pipeName))
    , m_command(std::move(command))
    , m_application(std::move(application))
    , m_timeLine(timeLine)
    , m_current(&add(QString()))
{
}

bool Sessions::select(const QString& name)
{
    const auto found = m_sessions.find(name);
    if (found == m_sessions.end())
        return false;
    m_current = found->second.get();
    return true;
}

bool Sessions::start(const QString& name, const QStringList& options, QString& problem)
{
    const bool isFirst = name.isEmpty();
    if (m_command.isEmpty())
        problem = QStringLiteral("there is no command to launch a workbench with");
    else if (isFirst ? first().wasLaunched() : m_sessions.count(name) != 0)
        problem = QStringLiteral("there is a %1 already")
                      .arg(isFirst ? QStringLiteral("first workbench")
                                   : QStringLiteral("workbench ") + name);
    if (!problem.isEmpty())
        return false;
    HostSession& session = isFirst ? first() : add(name);
    if (!session.hasPipes())
        problem = QStringLiteral("the pipes of %1 cannot be created").arg(name);
    else if (!session.launch(m_command, options))
        problem = session.startProblem();
    return problem.isEmpty() && select(name);
}

std::unique_ptr<AccountsView> Sessions::viewAccounts() const
{
    return std::make_unique<AccountsView>(m_application, m_timeLine);
}

QStringList Sessions::names() const
{
    QStringList names;
    for (const auto& [name, session] : m_sessions) {
        if (m_command.isEmpty() || session->wasLaunched())
            names << name;
    }
    return names;
}

const HostSession* Sessions::endedUnexpectedly() const
{
    const auto found = std::find_if(m_sessions.begin(), m_sessions.end(), [](const auto& session) {
        return session.second->hasEndedUnexpectedly();
    });
    return found == m_sessions.end() ? nullptr : found->second.get();
}

HostSession& Sessions::add(const QString& name)
{
    const QString pipes = name.isEmpty() ? m_pipeName : m_pipeName + QLatin1Char('-') + name;
    auto session = std::make_unique<HostSession>(name, pipes, m_timeLine);
    connect(session.get(), &HostSession::changed, this, &Sessions::changed);
    return *(m_sessions[name] = std::move(session));
}
