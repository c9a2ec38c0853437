#include "tools/pavo-workbench/Options.h"

#include "pavo_base/Logger.h"
#include "tools/pavo-workbench/Commands.h"
#include "tools/pavo-workbench/Screen.h"
#include "tools/pavo-workbench/Workbench.h"
#include "tools/support/CommandLine.h"
#include "tools/support/Tool.h"

#include <algorithm>
#include <iterator>

namespace {

const char* const kDefaultAccounts[] = {"waiter:secret", "cashier:secret", "小红:secret"};

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

/// Of PIN:TOKEN.
std::optional<Options::Account> accountOf(const QString& text)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    if (colon < 1)
        return std::nullopt;
    return Options::Account{text.left(colon).toStdString(), text.mid(colon + 1).toStdString()};
}

QString description()
{
    return QStringLiteral(
               "A sample workbench over the library: prints what the host and the other accounts "
               "want\nof it, acts on it and on the lines of its standard input, and ends when the "
               "host goes\naway.\n"
               "\n"
               "Exit codes:\n"
               "  0  the host went away, or the workbench was told to quit\n"
               "  2  wrong usage\n"
               "  3  the command line names no two pipes\n"
               "  4  the host went away before the main window was entered\n"
               "  5  there is no display for the window\n"
               "\n"
               "Standard input takes ") +
           Commands::help();
}

} // namespace

std::optional<Options> Options::parse(const QStringList& arguments, int& exitCode)
{
    CommandLine parser(description());
    const QCommandLineOption headlessOption(
        QStringLiteral("headless"),
        QLatin1String(Screen::isBuiltIn()
                          ? "Run without a window on the screen."
                          : "Run without a window on the screen, as this build always does: it "
                            "has been made without Qt's widgets."));
    const QCommandLineOption applicationOption(
        QStringLiteral("application"),
        QStringLiteral("The installation to take part in. By default pavo-workbench."),
        QStringLiteral("name"), QStringLiteral("pavo-workbench"));
    const QCommandLineOption account(
        QStringLiteral("account"),
        QStringLiteral("An account that can log in; may be repeated. By default waiter:secret, "
                       "cashier:secret and 小红:secret."),
        QStringLiteral("pin:token"));
    const QCommandLineOption pin(
        QStringLiteral("pin"),
        QStringLiteral("Log this account in, without waiting for the host to do it."),
        QStringLiteral("pin"));
    const QCommandLineOption waitEnterOption(
        QStringLiteral("wait-enter"),
        QStringLiteral("Enter the main window when told on standard input, not after start-up."));
    const QCommandLineOption log(
        QStringLiteral("log"),
        QStringLiteral(
            "Log from this level on (off, error, warn, info, debug) to standard error or "
            "to a file. By default warn."),
        QStringLiteral("level[:file]"), QStringLiteral("warn"));
    parser.addOptions({headlessOption, applicationOption, account, pin, waitEnterOption, log});
    parser.addPositionalArgument(QStringLiteral("channel"),
                                 QStringLiteral("The host's pipes, as it adds them: "
                                                "pipe?param=READER&WRITER"));

    const auto wrongUsage = [&](const QString& problem) {
        complain(problem);
        exitCode = Workbench::WrongUsage;
        return std::nullopt;
    };
    if (!parser.read(arguments, exitCode))
        return std::nullopt;
    if (!startLog(parser.value(log)))
        return wrongUsage(QStringLiteral("no such level, or the file cannot be written: %1")
                              .arg(parser.value(log)));

    Options options;
    options.headless = !Screen::isBuiltIn() || parser.isSet(headlessOption);
    options.waitEnter = parser.isSet(waitEnterOption);
    options.application = parser.value(applicationOption);
    QStringList accounts = parser.values(account);
    if (accounts.isEmpty())
        for (const char* const known : kDefaultAccounts)
            accounts << QString::fromUtf8(known);
    for (const QString& each : qAsConst(accounts)) {
        const std::optional<Account> known = accountOf(each);
        if (!known)
            return wrongUsage(QStringLiteral("not PIN:TOKEN: %1").arg(each));
        options.accounts.push_back(*known);
        if (parser.value(pin).toStdString() == known->pin)
            options.own = known;
    }
    if (parser.isSet(pin) && !options.own)
        return wrongUsage(QStringLiteral("not an account: %1").arg(parser.value(pin)));
    return options;
}
