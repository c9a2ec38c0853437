#include "tools/pavo-host/Script.h"

#include "tools/pavo-host/InboundMessages.h"
#include "tools/pavo-host/ScriptCommands.h"
#include "tools/pavo-host/Sessions.h"
#include "tools/pavo-host/Traffic.h"

#include <QFile>
#include <QTextCodec>

#include <utility>

namespace {

bool isUtf8(const QByteArray& text)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(text.constData(), text.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

} // namespace

std::optional<Step> Script::parseLine(const QString& line, QString& problem)
{
    const QString text = line.trimmed();
    if (text.startsWith(QLatin1Char('{')))
        return sendStep(frame(text.toUtf8()));
    QString rest;
    const QString word = ScriptCommands::firstWord(text, rest);
    if (ScriptCommands::has(word))
        return ScriptCommands::parse(word, rest, problem);
    const std::optional<QString> example = InboundMessages::exampleArguments(word);
    if (!example) {
        problem = QStringLiteral("neither a command nor a message: %1").arg(text);
        return std::nullopt;
    }
    const auto arguments =
        ScriptCommands::parseArguments(rest.isEmpty() ? *example : rest, problem);
    if (!arguments)
        return std::nullopt;
    return sendStep(frame(composeMessage(word, *arguments)));
}

bool Script::isBlank(const QString& line)
{
    const QString text = line.trimmed();
    return text.isEmpty() || text.startsWith(QLatin1Char('#'));
}

std::optional<std::vector<Step>> Script::read(const QString& fileName, QString& problem)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        problem = QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString());
        return std::nullopt;
    }
    std::vector<Step> steps;
    int number = 0;
    // All at once, since of a pipe nobody knows whether its end has been reached.
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& bytes : lines) {
        const QString place = QStringLiteral("%1:%2").arg(fileName).arg(++number);
        const QString line = QString::fromUtf8(bytes);
        if (isBlank(line))
            continue;
        std::optional<Step> step;
        if (isUtf8(bytes))
            step = parseLine(line, problem);
        else
            problem = QStringLiteral("this is no text in UTF-8");
        if (!step) {
            problem = QStringLiteral("%1: %2").arg(place, problem);
            return std::nullopt;
        }
        step->place = place;
        steps.push_back(std::move(*step));
    }
    return steps;
}

std::vector<Step> Script::farewell(const QStringList& names)
{
    std::vector<Step> steps{arrangeStep([](Sessions& sessions, QString& problem) {
        const HostSession* const ended = sessions.endedUnexpectedly();
        if (ended)
            problem = ended->endText();
        return !ended;
    })};
    Step leave;
    leave.start = [](HostSession& session) { session.close(); };
    leave.check = [](HostSession& session) {
        if (session.wasLaunched() && !session.hasEnded())
            return Verdict{Verdict::Waiting, {}};
        return session.hasCrashed() ? Verdict{Verdict::Failed, session.endText()} : Verdict{};
    };
    leave.awaited = QStringLiteral("the workbench's end");
    leave.needsWorkbench = false;
    for (const QString& name : names) {
        leave.arrange = [name](Sessions& sessions, QString& /*problem*/) {
            return sessions.select(name);
        };
        steps.push_back(leave);
    }
    return steps;
}

Step Script::nothingElse()
{
    return arrangeStep([](Sessions& sessions, QString& problem) {
        const QStringList names = sessions.names();
        for (const QString& name : names) {
            sessions.select(name);
            const std::optional<Traffic> message = sessions.current().takeMessage();
            if (message) {
                problem = QStringLiteral("the workbench has also said %1").arg(message->text);
                return false;
            }
        }
        return true;
    });
}

QString Script::help()
{
    using ScriptCommands::helpLine;
    return QStringLiteral("Lines of a script or of the prompt:\n") +
           helpLine(QStringLiteral("{...}"), "send this JSON message as it is") +
           helpLine(QStringLiteral("NAME [ARGUMENTS]"),
                    "send this message, without ARGUMENTS its example") +
           ScriptCommands::help() + helpLine(QStringLiteral("# ..."), "nothing");
}
