#include "pavo_base/Logger.h"
#include "pavo_core/SimulatedLoginService.h"
#include "tools/pavo-workbench/Commands.h"
#include "tools/pavo-workbench/Workbench.h"
#include "tools/support/Lines.h"
#include "tools/support/StandardInput.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>

namespace {

const char* const kDefaultAccounts[] = {"waiter:secret", "cashier:secret"};

struct Level
{
    const char* name;
    log4cplus::LogLevel level;
};

constexpr Level kLevels[] = {{"off", log4cplus::OFF_LOG_LEVEL},
                             {"error", log4cplus::ERROR_LOG_LEVEL},
                             {"warn", log4cplus::WARN_LOG_LEVEL},
                             {"info", log4cplus::INFO_LOG_LEVEL},
                             {"debug", log4cplus::DEBUG_LOG_LEVEL}};

void complain(const QString& problem)
{
    std::fprintf(stderr, "pavo-workbench: %s\n", problem.toUtf8().constData());
    std::fflush(stderr);
}

/// Sets the log up as LEVEL[:FILE] says.
bool startLog(const QString& target)
{
    const QString name = target.section(QLatin1Char(':'), 0, 0);
    const QString file = target.section(QLatin1Char(':'), 1);
    const auto* level = std::find_if(std::begin(kLevels), std::end(kLevels),
                                     [&](const Level& l) { return name == QLatin1String(l.name); });
    return level != std::end(kLevels) &&
           Logger::initialise(level->level, file.toLocal8Bit().toStdString());
}

/// Makes an account known that is given as PIN:TOKEN.
bool addAccount(SimulatedLoginService& service, const QString& account)
{
    const int colon = account.indexOf(QLatin1Char(':'));
    if (colon < 1)
        return false;
    service.addAccount(account.left(colon).toStdString(), account.mid(colon + 1).toStdString());
    return true;
}

QString description()
{
    return QStringLiteral(
               "A sample workbench over the library, without a window: prints what the host wants "
               "of\nit, acts on the lines of its standard input, and ends when the host goes "
               "away.\n"
               "\n"
               "Exit codes:\n"
               "  0  the host went away, or \"quit\" was said\n"
               "  2  wrong usage\n"
               "  3  the command line names no two pipes\n"
               "  4  the host went away before the main window was entered\n"
               "\n"
               "Standard input takes ") +
           Commands::help();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("pavo-workbench"));

    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this."));
    const QCommandLineOption headless(
        QStringLiteral("headless"),
        QStringLiteral("Run without a window, as it always does so far."));
    const QCommandLineOption account(
        QStringLiteral("account"),
        QStringLiteral("An account that can log in; may be repeated. By default waiter:secret and "
                       "cashier:secret."),
        QStringLiteral("pin:token"));
    const QCommandLineOption waitEnter(
        QStringLiteral("wait-enter"),
        QStringLiteral("Enter the main window when told on standard input, not after start-up."));
    const QCommandLineOption log(
        QStringLiteral("log"),
        QStringLiteral(
            "Log from this level on (off, error, warn, info, debug) to standard error or "
            "to a file. By default warn."),
        QStringLiteral("level[:file]"), QStringLiteral("warn"));
    parser.addOptions({help, headless, account, waitEnter, log});
    parser.addPositionalArgument(QStringLiteral("channel"),
                                 QStringLiteral("The host's pipes, as it adds them: "
                                                "pipe?param=READER&WRITER"));

    const auto wrongUsage = [](const QString& problem) {
        complain(problem);
        return Workbench::WrongUsage;
    };
    if (!parser.parse(QCoreApplication::arguments()))
        return wrongUsage(parser.errorText());
    if (parser.isSet(help)) {
        std::fputs(parser.helpText().toUtf8().constData(), stdout);
        return 0;
    }
    if (!startLog(parser.value(log)))
        return wrongUsage(QStringLiteral("no such level, or the file cannot be written: %1")
                              .arg(parser.value(log)));
    const auto service = std::make_shared<SimulatedLoginService>();
    QStringList accounts = parser.values(account);
    if (accounts.isEmpty())
        for (const char* const known : kDefaultAccounts)
            accounts << QLatin1String(known);
    for (const QString& each : qAsConst(accounts)) {
        if (!addAccount(*service, each))
            return wrongUsage(QStringLiteral("not PIN:TOKEN: %1").arg(each));
    }

    Workbench workbench(service);
    if (!Workbench::startUp(QCoreApplication::arguments().join(QLatin1Char(' ')))) {
        complain(QStringLiteral("the command line names no two pipes"));
        return Workbench::NoChannel;
    }
    Workbench::say(QStringLiteral("started"));
    if (!parser.isSet(waitEnter))
        Workbench::enterMainWindow(0);

    StandardInput input;
    QByteArray buffer;
    QObject::connect(&input, &StandardInput::received, &application, [&](const QByteArray& bytes) {
        buffer += bytes;
        for (const QString& line : takeLines(buffer)) {
            QString problem;
            if (!Commands::run(line, problem))
                complain(problem);
        }
    });
    input.start();
    return QCoreApplication::exec();
}
