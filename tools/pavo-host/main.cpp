#include "tools/pavo-host/Options.h"
#include "tools/pavo-host/Prompt.h"
#include "tools/pavo-host/Recording.h"
#include "tools/pavo-host/Runner.h"
#include "tools/pavo-host/Sessions.h"
#include "tools/support/StandardInput.h"
#include "tools/support/Tool.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

int run(int argc, char** argv, bool hasColours)
{
    QCoreApplication application(argc, argv);
    int exitCode = Fine;
    std::optional<Options> options =
        Options::parse(QCoreApplication::arguments(), hasColours, exitCode);
    if (!options)
        return exitCode;
    Recording recording;
    TimeLine timeLine(options->format);
    timeLine.filter() = options->filter;
    if (!options->recording.isEmpty()) {
        QString problem;
        if (!recording.open(options->recording, problem)) {
            complain(problem);
            return WrongUsage;
        }
        timeLine.recordTo(&recording);
    }

    Sessions sessions(options->pipeName, options->command, options->application, timeLine);
    HostSession& first = sessions.first();
    if (!first.hasPipes()) {
        complain(QStringLiteral("the pipes cannot be created, does another host have "
                                "their names?"));
        return NotStarted;
    }
    Runner runner(sessions, timeLine, options->timeoutMs);
    QObject::connect(&runner, &Runner::done, &application,
                     [](bool fine) { QCoreApplication::exit(fine ? Fine : Failed); });

    const bool scriptLaunches = std::any_of(options->steps.begin(), options->steps.end(),
                                            [](const Step& step) { return step.launches; });
    if (options->command.isEmpty()) {
        timeLine.add(
            {Event::Host,
             QStringLiteral("waits for a workbench launched with %1").arg(first.argument())});
    } else if (!scriptLaunches && !first.launch(options->command)) {
        complain(first.startProblem());
        return NotStarted;
    }

    StandardInput rawInput;
    const bool isForPeople = options->format != TimeLine::Json;
    Prompt prompt(runner, timeLine, isForPeople);
    switch (options->source) {
    case Options::Source::Script:
        for (Step& step : options->steps)
            runner.add(std::move(step));
        runner.finish();
        break;
    case Options::Source::Raw:
        QObject::connect(&rawInput, &StandardInput::received, &runner,
                         [&](const QByteArray& bytes) { runner.add(sendStep(bytes)); });
        QObject::connect(&rawInput, &StandardInput::ended, &runner, &Runner::finish);
        rawInput.start();
        break;
    case Options::Source::Prompt:
        QObject::connect(&prompt, &Prompt::failed, &application,
                         [] { QCoreApplication::exit(WrongUsage); });
        prompt.start();
        break;
    }
    exitCode = QCoreApplication::exec();
    if (!recording.hasFailed())
        return exitCode;
    complain(QStringLiteral("the recording is not whole"));
    return Failed;
}

} // namespace

int main(int argc, char** argv)
{
    const Tool tool("pavo-host");
    return tool.end(run(argc, argv, tool.showsColours()));
}
