#include "tools/pavo-host/Complain.h"
#include "tools/pavo-host/Prompt.h"
#include "tools/pavo-host/Runner.h"
#include "tools/pavo-host/Script.h"
#include "tools/pavo-host/Sessions.h"
#include "tools/pavo-host/TimeLine.h"
#include "tools/support/StandardInput.h"
#include "tools/support/Version.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QUuid>

#include <algorithm>
#include <limits>

namespace {

enum ExitCode { Fine = 0, Failed = 1, WrongUsage = 2, NotStarted = 3 };

constexpr int kDefaultTimeoutS = 30;

QString description()
{
    return QStringLiteral(
               "The host's side of the channel: creates both pipes, launches a workbench on them,\n"
               "sends messages and shows both sides' traffic.\n"
               "\n"
               "The lines to carry out come from a script or from standard input; at a terminal "
               "there\nis a prompt. When they are over, the host goes away and waits for the "
               "workbench's end.\n"
               "\n"
               "Exit codes:\n"
               "  0  fine\n"
               "  1  an expectation was not met, or the workbench ended unexpectedly\n"
               "  2  wrong usage, or a line that cannot be understood\n"
               "  3  the pipes could not be created, or the workbench not started\n"
               "\n") +
           Script::help().trimmed();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pavo-host"));

    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this."));
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption script(QStringLiteral("script"),
                                    QStringLiteral("Carry out the lines of <file>."),
                                    QStringLiteral("file"));
    const QCommandLineOption raw(
        QStringLiteral("raw"),
        QStringLiteral("Send the bytes of standard input as they are, then go away."));
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
    parser.addOptions({help, script, raw, name, timeout, accounts});
    parser.addPositionalArgument(
        QStringLiteral("command"),
        QStringLiteral("The workbench to launch, with its arguments; the pipes' names are added as "
                       "the last one. Without it, launch one by hand."),
        QStringLiteral("[-- command...]"));

    bool isNumber = false;
    const auto wrongUsage = [](const QString& problem) {
        complain(QString(), problem);
        return WrongUsage;
    };
    if (!parser.parse(QCoreApplication::arguments()))
        return wrongUsage(parser.errorText());
    TimeLine timeLine;
    if (parser.isSet(help)) {
        timeLine.print(parser.helpText());
        return Fine;
    }
    if (parser.isSet(version)) {
        timeLine.print(versionText());
        return Fine;
    }
    if (parser.isSet(script) && parser.isSet(raw))
        return wrongUsage(QStringLiteral("--script and --raw exclude each other"));
    const int seconds = parser.value(timeout).toInt(&isNumber);
    if (!isNumber || seconds < 1 || seconds > std::numeric_limits<int>::max() / 2000)
        return wrongUsage(QStringLiteral("not a number of seconds: %1").arg(parser.value(timeout)));

    std::vector<Step> steps;
    if (parser.isSet(script)) {
        QString problem;
        auto read = Script::read(parser.value(script), problem);
        if (!read)
            return wrongUsage(problem);
        steps = std::move(*read);
    }

    const QStringList command = parser.positionalArguments();
    Sessions sessions(parser.isSet(name) ? parser.value(name)
                                         : QStringLiteral("pavo-") +
                                               QUuid::createUuid().toString(QUuid::Id128).left(12),
                      command, parser.value(accounts), timeLine);
    HostSession& first = sessions.first();
    if (!first.hasPipes()) {
        complain(QString(), QStringLiteral("the pipes cannot be created, does another host have "
                                           "their names?"));
        return NotStarted;
    }
    Runner runner(sessions, seconds * 1000);
    QObject::connect(&runner, &Runner::done, &application,
                     [](bool fine) { QCoreApplication::exit(fine ? Fine : Failed); });

    const bool scriptLaunches =
        std::any_of(steps.begin(), steps.end(), [](const Step& step) { return step.launches; });
    if (command.isEmpty()) {
        timeLine.add(
            TimeLine::Host,
            QStringLiteral("waits for a workbench launched with %1").arg(first.argument()));
    } else if (!scriptLaunches && !first.launch(command)) {
        complain(QString(), QStringLiteral("cannot start %1").arg(command.first()));
        return NotStarted;
    }

    StandardInput rawInput;
    Prompt prompt(runner, timeLine);
    if (parser.isSet(script)) {
        for (Step& step : steps)
            runner.add(std::move(step));
        runner.finish();
    } else if (parser.isSet(raw)) {
        QObject::connect(&rawInput, &StandardInput::received, &runner,
                         [&](const QByteArray& bytes) { runner.add(sendStep(bytes)); });
        QObject::connect(&rawInput, &StandardInput::ended, &runner, &Runner::finish);
        rawInput.start();
    } else {
        QObject::connect(&prompt, &Prompt::failed, &application,
                         [] { QCoreApplication::exit(WrongUsage); });
        prompt.start();
    }
    return QCoreApplication::exec();
}
