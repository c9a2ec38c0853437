#include "tools/pavo-host/Options.h"

#include "tools/pavo-host/Script.h"
#include "tools/support/CommandLine.h"
#include "tools/support/Tool.h"

#include <QUuid>

#include <limits>

namespace {

constexpr int kDefaultTimeoutS = 30;

QString description()
{
    return QStringLiteral(
               "The host's side of the channel: creates both pipes, launches a workbench on\n"
               "them, sends messages and shows both sides' traffic.\n"
               "\n"
               "The lines to carry out come from a script or from standard input; at a\n"
               "terminal there is a prompt. When they are over, the host goes away and waits\n"
               "for the workbench's end.\n"
               "\n"
               "Exit codes:\n"
               "  0  fine\n"
               "  1  an expectation was not met, the workbench ended unexpectedly, or the\n"
               "     output or the recording could not be written\n"
               "  2  wrong usage, or a line that cannot be understood\n"
               "  3  the pipes could not be created, or the workbench not started\n"
               "\n") +
           Script::help().trimmed();
}

std::optional<TimeLine::Format> formatOf(const QString& colour, bool isJson, bool hasColours)
{
    const bool isAlways = colour == QLatin1String("always");
    const bool isAuto = colour == QLatin1String("auto");
    if (!isAlways && !isAuto && colour != QLatin1String("never"))
        return std::nullopt;
    if (isJson)
        return TimeLine::Json;
    const bool isWanted = isAuto && hasColours && qEnvironmentVariableIsEmpty("NO_COLOR");
    return isAlways || isWanted ? TimeLine::Coloured : TimeLine::Plain;
}

} // namespace

std::optional<Options> Options::parse(const QStringList& arguments, bool hasColours, int& exitCode)
{
    CommandLine parser(description());
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption script(QStringLiteral("script"),
                                    QStringLiteral("Carry out the lines of <file>."),
                                    QStringLiteral("file"));
    const QCommandLineOption record(
        QStringLiteral("record"),
        QStringLiteral("Write the conversation to <file>, as a script with the host's pauses."),
        QStringLiteral("file"));
    const QCommandLineOption replay(
        QStringLiteral("replay"),
        QStringLiteral("Carry out the lines of <file>, and fail if the workbench says anything "
                       "that they do not expect."),
        QStringLiteral("file"));
    const QCommandLineOption raw(
        QStringLiteral("raw"),
        QStringLiteral("Send the bytes of standard input as they are, then go away."));
    const QCommandLineOption show(
        QStringLiteral("show"),
        QStringLiteral("Show only the lines of these <kinds>, as \"show\" does."),
        QStringLiteral("kinds"));
    const QCommandLineOption messages(
        QStringLiteral("messages"),
        QStringLiteral("Show only the messages with these <names>, as \"messages\" does."),
        QStringLiteral("names"));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Show everything as JSON, an object a line."));
    const QCommandLineOption colour(
        QStringLiteral("color"),
        QStringLiteral("Use colours <when>: always, never, or auto, the default, which is at a "
                       "terminal unless NO_COLOR is set."),
        QStringLiteral("when"), QStringLiteral("auto"));
    const QCommandLineOption name(
        QStringLiteral("name"),
        QStringLiteral("Start the pipes' names with <name> rather than with a unique one."),
        QStringLiteral("name"));
    const QCommandLineOption timeout(
        QStringLiteral("timeout"),
        QStringLiteral("Wait for anything at most <seconds>, by default %1.").arg(kDefaultTimeoutS),
        QStringLiteral("seconds"), QString::number(kDefaultTimeoutS));
    const QCommandLineOption accounts(
        QStringLiteral("application"),
        QStringLiteral("The installation whose accounts \"expect-accounts\" is about, by default "
                       "pavo-workbench."),
        QStringLiteral("name"), QStringLiteral("pavo-workbench"));
    parser.addOptions(
        {script, record, replay, raw, show, messages, json, colour, name, timeout, accounts});
    parser.addPositionalArgument(
        QStringLiteral("command"),
        QStringLiteral("The workbench to launch, with its arguments; the pipes' names are added as "
                       "the last one. Without it, launch one by hand."),
        QStringLiteral("[-- command...]"));

    const auto wrongUsage = [&](const QString& problem) {
        complain(problem);
        exitCode = WrongUsage;
        return std::nullopt;
    };
    if (!parser.read(arguments, exitCode))
        return std::nullopt;
    if (int{parser.isSet(script)} + int{parser.isSet(replay)} + int{parser.isSet(raw)} > 1)
        return wrongUsage(QStringLiteral("--script, --replay and --raw exclude each other"));
    bool isNumber = false;
    const int seconds = parser.value(timeout).toInt(&isNumber);
    if (!isNumber || seconds < 1 || seconds > std::numeric_limits<int>::max() / 2000)
        return wrongUsage(
            QStringLiteral("--timeout is a number of seconds, not %1").arg(parser.value(timeout)));
    const auto format = formatOf(parser.value(colour), parser.isSet(json), hasColours);
    if (!format)
        return wrongUsage(
            QStringLiteral("--color is auto, always or never, not %1").arg(parser.value(colour)));
    QString problem;
    const auto kinds = Filter::parseKinds(parser.value(show), problem);
    if (!kinds)
        return wrongUsage(problem);

    Options options;
    if (parser.isSet(script) || parser.isSet(replay)) {
        auto steps = Script::read(parser.value(parser.isSet(replay) ? replay : script), problem);
        if (!steps)
            return wrongUsage(problem);
        options.source = Source::Script;
        options.steps = std::move(*steps);
        if (parser.isSet(replay))
            options.steps.push_back(Script::nothingElse());
    } else if (parser.isSet(raw)) {
        options.source = Source::Raw;
    }
    options.recording = parser.value(record);
    options.pipeName = parser.isSet(name) ? parser.value(name)
                                          : QStringLiteral("pavo-") +
                                                QUuid::createUuid().toString(QUuid::Id128).left(12);
    options.application = parser.value(accounts);
    options.command = parser.positionalArguments();
    options.timeoutMs = seconds * 1000;
    options.format = *format;
    options.filter.setKinds(*kinds);
    options.filter.setNames(parser.value(messages));
    return options;
}
