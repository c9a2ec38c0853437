#include "pavo_core/SimulatedLoginService.h"
#include "tools/pavo-workbench/Commands.h"
#include "tools/pavo-workbench/Options.h"
#include "tools/pavo-workbench/Say.h"
#include "tools/pavo-workbench/Screen.h"
#include "tools/pavo-workbench/Workbench.h"
#include "tools/support/Lines.h"
#include "tools/support/StandardInput.h"
#include "tools/support/Tool.h"

#include <QCoreApplication>

#include <memory>

namespace {

/// What the command line says; it is known before it can be known which application is needed.
std::optional<Options> readOptions(int argc, char** argv, int& exitCode)
{
    const QCoreApplication application(argc, argv);
    return Options::parse(QCoreApplication::arguments(), exitCode);
}

} // namespace

int main(int argc, char** argv)
{
    const Tool tool("pavo-workbench");
    int exitCode = 0;
    const std::optional<Options> options = readOptions(argc, argv, exitCode);
    if (!options)
        return exitCode;
    if (!options->headless && !Screen::hasDisplay()) {
        complain(QStringLiteral("there is no display; --headless does without"));
        return Workbench::NoDisplay;
    }
    const std::unique_ptr<QCoreApplication> application =
        options->headless ? std::make_unique<QCoreApplication>(argc, argv)
                          : Screen::makeApplication(argc, argv);
    QCoreApplication::setApplicationName(options->application);

    const auto service = std::make_shared<SimulatedLoginService>();
    for (const Options::Account& account : options->accounts)
        service->addAccount(account.pin, account.token);
    Workbench workbench(service);
    const std::unique_ptr<Screen> screen = options->headless ? nullptr : Screen::make(workbench);
    if (!Workbench::startUp(QCoreApplication::arguments().join(QLatin1Char(' ')))) {
        complain(QStringLiteral("the command line names no two pipes"));
        return Workbench::NoChannel;
    }
    say(QStringLiteral("started"));
    if (!options->waitEnter)
        workbench.enterMainWindow(0);
    if (options->own)
        workbench.logIn(options->own->pin, options->own->token);

    StandardInput input;
    QByteArray buffer;
    const Commands::Target target{workbench, screen.get()};
    QObject::connect(&input, &StandardInput::received, application.get(),
                     [&](const QByteArray& bytes) {
                         buffer += bytes;
                         for (const QString& line : takeLines(buffer)) {
                             QString problem;
                             if (!Commands::run(target, line, problem))
                                 complain(problem);
                         }
                     });
    input.start();
    return QCoreApplication::exec();
}
