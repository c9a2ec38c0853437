#include "tools/pavo-host/Prompt.h"

#include "tools/pavo-host/InboundMessages.h"
#include "tools/pavo-host/Runner.h"
#include "tools/pavo-host/Script.h"
#include "tools/pavo-host/ScriptCommands.h"
#include "tools/pavo-host/TimeLine.h"
#include "tools/support/Lines.h"

#include <cstdio>
#include <utility>

namespace {

constexpr const char* kPrompt = "> ";
constexpr const char* kErasePrompt = "\r  \r";

} // namespace

struct Prompt::Command
{
    const char* name;
    const char* purpose;
    void (Prompt::*action)(const QString& rest);
};

const Prompt::Command Prompt::kCommands[] = {
    {"again", "repeat the last line, or line NUMBER of the history", &Prompt::repeat},
    {"history", "list the lines so far", &Prompt::showHistory},
    {"help", "list what can be said", &Prompt::showHelp},
    {"quit", "go away and end", &Prompt::quit},
};

Prompt::Prompt(Runner& runner, TimeLine& timeLine, bool isForPeople)
    : m_runner(runner)
    , m_timeLine(timeLine)
    , m_interactive(isForPeople && StandardInput::isTerminal())
{
}

Prompt::~Prompt()
{
    if (m_interactive && !m_editor)
        std::fputs(kErasePrompt, stdout);
}

void Prompt::start()
{
    if (m_interactive) {
        m_runner.setForgiving();
        m_timeLine.print(QStringLiteral("\"help\" lists what can be said; a message's name can be "
                                        "shortened.\n"));
        m_editor = LineEditor::make(kPrompt, &Prompt::completions);
    }
    if (m_editor)
        startEditor();
    else
        startPlain();
}

void Prompt::startEditor()
{
    connect(m_editor.get(), &LineEditor::entered, this, &Prompt::takeLine);
    connect(m_editor.get(), &LineEditor::ended, &m_runner, &Runner::finish);
    connect(m_editor.get(), &LineEditor::offers, this, [this](const QStringList& words) {
        m_timeLine.print(words.join(QLatin1String("  ")) + QLatin1Char('\n'));
    });
    m_timeLine.shareTerminal([this] { m_editor->hide(); }, [this] { m_editor->show(); });
    m_editor->start();
}

void Prompt::startPlain()
{
    const auto showPrompt = [this] {
        if (!m_interactive)
            return;
        std::fputs(kPrompt, stdout);
        std::fflush(stdout);
    };
    connect(&m_input, &StandardInput::received, this, [=](const QByteArray& bytes) {
        m_buffer += bytes;
        for (const QString& line : takeLines(m_buffer))
            takeLine(line);
        showPrompt();
    });
    connect(&m_input, &StandardInput::ended, this, [this] {
        for (const QString& line : takeAllLines(m_buffer))
            takeLine(line);
        m_runner.finish();
    });
    if (m_interactive)
        m_timeLine.shareTerminal([] { std::fputs(kErasePrompt, stdout); }, showPrompt);
    showPrompt();
    m_input.start();
}

QStringList Prompt::completions(const QString& word)
{
    QStringList words = InboundMessages::names(word) + ScriptCommands::names(word);
    for (const Command& command : kCommands) {
        const QString name = QLatin1String(command.name);
        if (name.startsWith(word) && !words.contains(name))
            words << name;
    }
    return words;
}

void Prompt::takeLine(const QString& line)
{
    ++m_lineNumber;
    const QString text = line.trimmed();
    if (m_interactive) {
        takeTyped(text);
    } else if (!Script::isBlank(text)) {
        parse(text, QStringLiteral("standard input:%1").arg(m_lineNumber));
    }
}

void Prompt::takeTyped(const QString& line)
{
    if (Script::isBlank(line))
        return;
    QString rest;
    const QString word = ScriptCommands::firstWord(line, rest);
    for (const Command& command : kCommands) {
        if (word == QLatin1String(command.name)) {
            (this->*command.action)(rest);
            return;
        }
    }
    m_history << line;
    // A message's name can be shortened as far as it stays the only one.
    const QStringList names = InboundMessages::names(word);
    if (names.size() > 1)
        m_timeLine.print(names.join(QLatin1String("  ")) + QLatin1Char('\n'));
    else
        parse(names.value(0, word) + line.mid(word.size()), QString());
}

void Prompt::parse(const QString& line, const QString& place)
{
    QString problem;
    std::optional<Step> step = Script::parseLine(line, problem);
    if (step) {
        step->place = place;
        m_runner.add(std::move(*step));
        return;
    }
    m_timeLine.complain(place, problem);
    if (!m_interactive)
        Q_EMIT failed();
}

void Prompt::repeat(const QString& number)
{
    const int index = number.isEmpty() ? m_history.size() - 1 : number.toInt() - 1;
    if (index < 0 || index >= m_history.size()) {
        m_timeLine.complain(QString(), QStringLiteral("there is no such line"));
        return;
    }
    takeTyped(QString(m_history.at(index)));
}

void Prompt::showHistory(const QString& /*rest*/)
{
    int number = 0;
    for (const QString& line : qAsConst(m_history))
        m_timeLine.print(QStringLiteral("%1  %2\n").arg(++number, 4).arg(line));
}

void Prompt::showHelp(const QString& /*rest*/)
{
    m_timeLine.print(Script::help() + QStringLiteral("At the prompt also:\n"));
    for (const Command& command : kCommands)
        m_timeLine.print(ScriptCommands::helpLine(QLatin1String(command.name), command.purpose));
}

void Prompt::quit(const QString& /*rest*/)
{
    m_runner.finish();
}
