#pragma once

#include "tools/pavo-host/AccountsView.h"
#include "tools/pavo-host/HostSession.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>

/// The host's workbenches, each on pipes of its own and with a name; the first one has none. What
/// is to be done is done with one of them, the current one.
class Sessions : public QObject
{
    Q_OBJECT

public:
    /// Creates the pipes of the first one. `command` is what workbenches are launched with, and
    /// `application` the name of the installation that they take part in.
    Sessions(QString pipeName, QStringList command, QString application, TimeLine& timeLine);

    HostSession& first() { return *m_sessions.at(QString()); }
    HostSession& current() { return *m_current; }
    /// Makes the one with this name the current one; false when there is none.
    bool select(const QString& name);
    /// Launches another one with more options and makes it the current one. False, with the reason
    /// in `problem`, when that cannot be done.
    bool start(const QString& name, const QStringList& options, QString& problem);
    [[nodiscard]] std::unique_ptr<AccountsView> viewAccounts() const;
    /// Of all that are served. Where there is a command, the first one only once it was launched.
    [[nodiscard]] QStringList names() const;
    /// One that has ended though it was not to, or null.
    [[nodiscard]] const HostSession* endedUnexpectedly() const;

Q_SIGNALS:
    /// Something has happened to one of them.
    void changed();

private:
    HostSession& add(const QString& name);

    const QString m_pipeName;
    const QStringList m_command;
    const QString m_application;
    TimeLine& m_timeLine;
    std::map<QString, std::unique_ptr<HostSession>> m_sessions;
    HostSession* m_current;
};
