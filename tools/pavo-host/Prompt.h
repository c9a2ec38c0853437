#pragma once

#include "tools/pavo-host/LineEditor.h"
#include "tools/support/StandardInput.h"

#include <QObject>
#include <QStringList>

#include <memory>

class Runner;
class TimeLine;

/// Takes lines from standard input: at a terminal with a prompt, completion and history.
class Prompt : public QObject
{
    Q_OBJECT

public:
    /// Programs are not prompted.
    Prompt(Runner& runner, TimeLine& timeLine, bool isForPeople);
    ~Prompt() override;

    void start();

Q_SIGNALS:
    /// There is a line that nobody understands, and nobody at a terminal to correct it.
    void failed();

private:
    struct Command;
    static const Command kCommands[];

    void startEditor();
    void startPlain();
    static QStringList completions(const QString& word);
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
    std::unique_ptr<LineEditor> m_editor; ///< Null where there is none.
    StandardInput m_input;
    QByteArray m_buffer;
    int m_lineNumber = 0;
    QStringList m_history;
};
