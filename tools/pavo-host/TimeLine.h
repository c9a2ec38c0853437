#pragma once

#include <QElapsedTimer>
#include <QString>

/// Prints what happens on both sides to standard output, a line each, with the seconds since the
/// start.
class TimeLine
{
public:
    enum Who { Host, ToWorkbench, FromWorkbench, Workbench, WorkbenchLog, Accounts };

    TimeLine() { m_clock.start(); }

    void add(Who who, const QString& text);
    void addHeading(const QString& text);
    /// Text of several lines, as it is.
    void print(const QString& text);
    /// Asks for input; whatever is printed next takes this line.
    void showPrompt();

private:
    QElapsedTimer m_clock;
    bool m_atPrompt = false;
};
