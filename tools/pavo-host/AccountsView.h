#pragma once

#include <QObject>
#include <QProcess>
#include <QString>

class TimeLine;

/// What pavo-accounts, which knows nothing of a workbench but what stands in the shared segment,
/// sees of an installation. Looks again and again, as fast as it can.
class AccountsView : public QObject
{
    Q_OBJECT

public:
    AccountsView(const QString& application, TimeLine& timeLine);
    ~AccountsView() override;

    /// To be called once.
    void start();
    /// What was seen last, in one line; empty before there was a first look.
    [[nodiscard]] const QString& text() const { return m_text; }
    /// Why nothing can be seen at all; empty unless that is so.
    [[nodiscard]] const QString& problem() const { return m_problem; }

Q_SIGNALS:
    void changed();

private:
    void finishLook();

    TimeLine& m_timeLine;
    QProcess m_process;
    QString m_text;
    QString m_problem;
};
