#pragma once

#include "tools/support/StandardInput.h"

#include <QObject>
#include <QStringList>

class Runner;
class TimeLine;

/// Takes lines from standard input: at a terminal with a prompt, completion and history.
class Prompt : public QObject
{
    Q_OBJECT

public:
    Prompt(Runner& runner, TimeLine& timeLine);

    void start();

Q_SIGNALS:
    /// There is a line that nobody understands, and nobody at a terminal to correct it.
    void failed();

private:
    struct Command;
    static const Command kCommands[];

    void takeLine(const QString& line);
    void takeTyped(const QString& line);
    void parse(const QString& line, const QString& place);

    void repeat(const QString& number);
    void showHistory(const QString& rest);
    void showHelp(const QString& rest);
    void quit(const QString& rest);

    Runner& m_runner;
    TimeLine& m_timeLine;
    const bool m_interactive;
    StandardInput m_input;
    QByteArray m_buffer;
    int m_lineNumber = 0;
    QStringList m_history;
};
