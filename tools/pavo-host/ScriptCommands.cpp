#include "tools/pavo-host/ScriptCommands.h"

#include "tools/pavo-host/AccountsView.h"
#include "tools/pavo-host/HostSession.h"
#include "tools/pavo-host/InboundMessages.h"
#include "tools/pavo-host/Script.h"
#include "tools/pavo-host/Sessions.h"
#include "tools/pavo-host/Traffic.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QTimer>

#include <algorithm>
#include <iterator>
#include <memory>

using namespace ScriptCommands;

namespace {

std::optional<Step> parseExpect(const QString& rest, QString& problem)
{
    QString argumentsText;
    const QString name = firstWord(rest, argumentsText);
    std::optional<QJsonValue> arguments;
    if (!argumentsText.isEmpty()) {
        arguments = parseArguments(argumentsText, problem);
        if (!arguments)
            return std::nullopt;
    }
    Step step;
    step.awaited = rest;
    step.check = [name, arguments, rest](HostSession& session) {
        const std::optional<Traffic> message = session.takeMessage();
        if (!message)
            return Verdict{Verdict::Waiting, {}};
        if (message->name == name && (!arguments || message->arguments == *arguments))
            return Verdict{};
        return Verdict{Verdict::Failed,
                       QStringLiteral("expected %1 but got %2").arg(rest, message->text)};
    };
    return step;
}

std::optional<Step> parseExpectLine(const QString& rest, QString& /*problem*/)
{
    Step step;
    step.awaited = QStringLiteral("a line of the workbench with \"%1\"").arg(rest);
    step.check = [rest](HostSession& session) {
        return Verdict{session.takeLine(rest) ? Verdict::Met : Verdict::Waiting, {}};
    };
    return step;
}

std::optional<Step> parseExpectExit(const QString& rest, QString& problem)
{
    std::optional<int> code;
    if (!rest.isEmpty()) {
        bool ok = false;
        code = rest.toInt(&ok);
        if (!ok) {
            problem = QStringLiteral("not an exit code: %1").arg(rest);
            return std::nullopt;
        }
    }
    Step step;
    step.start = [](HostSession& session) { session.expectEnd(); };
    step.awaited = QStringLiteral("the workbench's end");
    step.needsWorkbench = false;
    step.check = [code](HostSession& session) {
        if (!session.hasEnded())
            return Verdict{Verdict::Waiting, {}};
        if (session.hasCrashed() || (code && session.exitCode() != *code))
            return Verdict{Verdict::Failed, session.endText()};
        return Verdict{};
    };
    return step;
}

std::optional<Step> parseExpectAccounts(const QString& rest, QString& /*problem*/)
{
    const auto view = std::make_shared<std::unique_ptr<AccountsView>>();
    // Where chance decides, three dots stand for anything.
    const QRegularExpression expected(
        QRegularExpression::anchoredPattern(QRegularExpression::escape(rest).replace(
            QStringLiteral("\\.\\.\\."), QStringLiteral(".*"))));
    Step step;
    step.arrange = [view](Sessions& sessions, QString& /*problem*/) {
        *view = sessions.viewAccounts();
        return true;
    };
    step.start = [view](HostSession& session) {
        QObject::connect(view->get(), &AccountsView::changed, &session, &HostSession::changed);
        (*view)->start();
    };
    step.awaited = QStringLiteral("the accounts to be %1").arg(rest);
    step.check = [view, expected](HostSession& /*session*/) {
        if (!(*view)->problem().isEmpty())
            return Verdict{Verdict::Failed, (*view)->problem()};
        const bool isMet = expected.match((*view)->text()).hasMatch();
        return Verdict{isMet ? Verdict::Met : Verdict::Waiting, {}};
    };
    step.needsWorkbench = false;
    return step;
}

std::optional<Step> parseStart(const QString& rest, QString& /*problem*/)
{
    QStringList words = QProcess::splitCommand(rest);
    const QString name = words.isEmpty() ? QString() : words.takeFirst();
    Step step = arrangeStep([name, words](Sessions& sessions, QString& problem) {
        return sessions.start(name, words, problem);
    });
    step.launches = true;
    return step;
}

std::optional<Step> parseWith(const QString& rest, QString& /*problem*/)
{
    return arrangeStep([rest](Sessions& sessions, QString& problem) {
        problem = QStringLiteral("there is no workbench %1").arg(rest);
        return sessions.select(rest);
    });
}

std::optional<Step> parseWorkbench(const QString& rest, QString& /*problem*/)
{
    Step step;
    step.start = [rest](HostSession& session) {
        if (session.isRunning())
            session.writeToStandardInput(rest);
    };
    step.check = [](HostSession& session) {
        if (session.isRunning())
            return Verdict{};
        return Verdict{Verdict::Failed,
                       QStringLiteral("there is no workbench that was launched from here")};
    };
    return step;
}

std::optional<Step> parseBytes(const QString& rest, QString& problem)
{
    const QByteArray text = rest.toLatin1().replace(' ', "").toLower();
    const QByteArray bytes = QByteArray::fromHex(text);
    if (bytes.toHex() != text) {
        problem = QStringLiteral("not pairs of hexadecimal digits: %1").arg(rest);
        return std::nullopt;
    }
    return sendStep(bytes);
}

std::optional<Step> parseText(const QString& rest, QString& /*problem*/)
{
    return sendStep(frame(rest.toUtf8()));
}

std::optional<Step> parseSplit(const QString& /*rest*/, QString& /*problem*/)
{
    return immediateStep([](HostSession& session) { session.splitNext(); });
}

std::optional<Step> parseWait(const QString& rest, QString& problem)
{
    bool ok = false;
    const int milliseconds = rest.toInt(&ok);
    if (!ok || milliseconds < 0) {
        problem = QStringLiteral("not a number of milliseconds: %1").arg(rest);
        return std::nullopt;
    }
    const auto clock = std::make_shared<QElapsedTimer>();
    Step step;
    step.start = [=](HostSession& session) {
        clock->start();
        QTimer::singleShot(milliseconds, Qt::PreciseTimer, &session, &HostSession::changed);
    };
    step.check = [=](HostSession& /*session*/) {
        return Verdict{clock->hasExpired(milliseconds - 1) ? Verdict::Met : Verdict::Waiting, {}};
    };
    step.extraMs = milliseconds;
    return step;
}

std::optional<Step> parseClose(const QString& /*rest*/, QString& /*problem*/)
{
    return immediateStep([](HostSession& session) { session.close(); });
}

std::optional<Step> parseSay(const QString& rest, QString& /*problem*/)
{
    return immediateStep([rest](HostSession& session) {
        session.timeLine().add({Event::Heading, rest});
    });
}

std::optional<Step> parseShow(const QString& rest, QString& problem)
{
    const auto kinds = Filter::parseKinds(rest, problem);
    if (!kinds)
        return std::nullopt;
    return immediateStep(
        [kinds](HostSession& session) { session.timeLine().filter().setKinds(*kinds); });
}

std::optional<Step> parseMessages(const QString& rest, QString& /*problem*/)
{
    return immediateStep(
        [rest](HostSession& session) { session.timeLine().filter().setNames(rest); });
}

std::optional<Step> parseExamples(const QString& /*rest*/, QString& /*problem*/)
{
    return immediateStep(
        [](HostSession& session) { session.timeLine().print(InboundMessages::examples()); });
}

std::optional<Step> parseHelp(const QString& /*rest*/, QString& /*problem*/)
{
    return immediateStep([](HostSession& session) { session.timeLine().print(Script::help()); });
}

struct Command
{
    const char* name;
    const char* parameters; ///< In brackets: may be left out. Empty: there are none.
    const char* purpose;
    std::optional<Step> (*parse)(const QString& rest, QString& problem);
};

constexpr Command kCommands[] = {
    {"text", "RAW", "send this text as a message's", parseText},
    {"bytes", "HEX", "send these bytes as they are", parseBytes},
    {"split", "", "send the next message in single bytes", parseSplit},
    {"expect", "NAME [ARGUMENTS]", "the workbench's next message is this one", parseExpect},
    {"expect-workbench", "TEXT", "the workbench prints or logs a line with this text",
     parseExpectLine},
    {"expect-exit", "[CODE]", "the workbench ends", parseExpectExit},
    {"expect-accounts", "TEXT",
     "the shared accounts are these, as the time line shows them; \"...\" stands for anything",
     parseExpectAccounts},
    {"start", "[NAME [OPTIONS]]",
     "launch a workbench, with more options, that the next lines are about; without NAME the first "
     "one, which a script with this does not have before",
     parseStart},
    {"with", "[NAME]", "the next lines are about this workbench; without NAME the first one",
     parseWith},
    {"workbench", "LINE", "write a line to the workbench's standard input", parseWorkbench},
    {"wait", "MILLISECONDS", "let time pass", parseWait},
    {"close", "", "close both pipes: the host goes away", parseClose},
    {"say", "TEXT", "print a heading", parseSay},
    {"show", "[KINDS]",
     "show only these lines: host, sent, received, output, log, accounts, heading; several with "
     "commas, all without KINDS",
     parseShow},
    {"messages", "[NAMES]",
     "show only messages of these names; several with commas, \"*\" for any text, all without "
     "NAMES",
     parseMessages},
    {"examples", "", "list the messages with examples", parseExamples},
    {"help", "", "list what can be said", parseHelp},
};

const Command* findCommand(const QString& name)
{
    const auto* command =
        std::find_if(std::begin(kCommands), std::end(kCommands),
                     [&](const auto& c) { return name == QLatin1String(c.name); });
    return command == std::end(kCommands) ? nullptr : command;
}

} // namespace

bool ScriptCommands::has(const QString& name)
{
    return findCommand(name) != nullptr;
}

QStringList ScriptCommands::names(const QString& prefix)
{
    QStringList found;
    for (const Command& command : kCommands) {
        const QString name = QLatin1String(command.name);
        if (name.startsWith(prefix))
            found << name;
    }
    return found;
}

std::optional<Step> ScriptCommands::parse(const QString& name, const QString& rest,
                                          QString& problem)
{
    const Command& command = *findCommand(name);
    const QString parameters = QLatin1String(command.parameters);
    const bool needsSome = !parameters.isEmpty() && !parameters.startsWith(QLatin1Char('['));
    if ((rest.isEmpty() && needsSome) || (!rest.isEmpty() && parameters.isEmpty())) {
        problem = QStringLiteral("usage: %1 %2").arg(QLatin1String(command.name), parameters);
        return std::nullopt;
    }
    return command.parse(rest, problem);
}

std::optional<QJsonValue> ScriptCommands::parseArguments(const QString& text, QString& problem)
{
    QJsonParseError error{};
    // In an array, so that scalars are accepted too.
    const QByteArray json = '[' + text.toUtf8() + ']';
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || document.array().size() != 1) {
        problem = QStringLiteral("these arguments are no JSON value: %1").arg(text);
        return std::nullopt;
    }
    return document.array().first();
}

QString ScriptCommands::firstWord(const QString& text, QString& rest)
{
    const auto* const end =
        std::find_if(text.begin(), text.end(), [](QChar c) { return c.isSpace(); });
    const auto length = static_cast<int>(end - text.begin());
    rest = text.mid(length).trimmed();
    return text.left(length);
}

QString ScriptCommands::help()
{
    QString text;
    for (const Command& command : kCommands)
        text += helpLine(QStringLiteral("%1 %2").arg(QLatin1String(command.name),
                                                     QLatin1String(command.parameters)),
                         command.purpose);
    return text;
}

QString ScriptCommands::helpLine(const QString& syntax, const char* purpose)
{
    constexpr int kColumn = 28;
    constexpr int kWidth = 79;
    QString text;
    QString line = (QStringLiteral("  ") + syntax).leftJustified(kColumn);
    const QStringList words = QString::fromLatin1(purpose).split(QLatin1Char(' '));
    for (const QString& word : words) {
        if (line.size() + 1 + word.size() > kWidth) {
            text += line + QLatin1Char('\n');
            line.fill(QLatin1Char(' '), kColumn);
        }
        line += QLatin1Char(' ') + word;
    }
    return text + line + QLatin1Char('\n');
}
