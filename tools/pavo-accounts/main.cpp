#include "tools/pavo-accounts/Report.h"
#include "tools/pavo-accounts/Unlock.h"
#include "tools/support/CommandLine.h"
#include "tools/support/Tool.h"

#include <QCoreApplication>
#include <QTimer>

namespace {

enum ExitCode { Fine = 0, Failed = 1, WrongUsage = 2 };

constexpr int kWatchIntervalMs = 250;

QString description()
{
    return QStringLiteral(
        "Shows the accounts of a running installation: which one is selected, the shared list in\n"
        "its order, and whether each account's window is there.\n"
        "\n"
        "\"remove\" takes the account of a process that crashed out of the list. Whether it has\n"
        "is judged by its window: as long as that is there, nothing is removed.\n"
        "\n"
        "\"unlock\" is for workbenches that hang: it looks at the lock of the list, and frees it "
        "if\n"
        "a program was killed with it that is none of the workbenches. It asks before it does.\n"
        "\n"
        "Exit codes:\n"
        "  0  fine, also if no process is running\n"
        "  1  the segment cannot be used, there is no such account that may be removed, the\n"
        "     lock is not free, or the output cannot be written\n"
        "  2  wrong usage");
}

int fail(ExitCode code, const QString& problem)
{
    complain(problem);
    return code;
}

int run(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    CommandLine parser(description());
    const QCommandLineOption name(QStringLiteral("application"),
                                  QStringLiteral("The workbench's application name. By default "
                                                 "pavo-workbench."),
                                  QStringLiteral("name"), QStringLiteral("pavo-workbench"));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Print a JSON object on one line."));
    const QCommandLineOption watch(QStringLiteral("watch"),
                                   QStringLiteral("Print again whenever something has changed."));
    const QCommandLineOption yes(QStringLiteral("yes"),
                                 QStringLiteral("Free the lock without asking."));
    parser.addOptions({name, json, watch, yes});
    parser.addPositionalArgument(QStringLiteral("remove APPID PIN"),
                                 QStringLiteral("The account to remove."),
                                 QStringLiteral("[remove APPID PIN |"));
    parser.addPositionalArgument(QStringLiteral("unlock"),
                                 QStringLiteral("Look at the lock, and free it if need be."),
                                 QStringLiteral("unlock]"));
    int exitCode = Fine;
    if (!parser.read(QCoreApplication::arguments(), exitCode))
        return exitCode;

    const Store store(parser.value(name));
    const QStringList command = parser.positionalArguments();
    QString problem;
    const bool isUnlock = command == QStringList{QStringLiteral("unlock")};
    if (parser.isSet(yes) && !isUnlock)
        return fail(WrongUsage, QStringLiteral("--yes is for unlock"));
    if (isUnlock && !parser.isSet(json) && !parser.isSet(watch))
        return unlock(store.application(), parser.isSet(yes)) ? Fine : Failed;
    if (!command.isEmpty()) {
        const bool isRemoval = command.size() == 3 && command[0] == QLatin1String("remove");
        if (!isRemoval || parser.isSet(json) || parser.isSet(watch))
            return fail(WrongUsage, QStringLiteral("expected: remove APPID PIN, or unlock"));
        return store.remove(command[1].toStdString(), command[2].toStdString(), problem)
                   ? Fine
                   : fail(Failed, problem);
    }

    const auto report = parser.isSet(json) ? &reportAsJson : &reportAsText;
    std::string last;
    const auto look = [&] {
        Store::Content content;
        if (!store.look(content, problem))
            return false;
        const std::string text = report(store.application(), content);
        if (text != last)
            print(QByteArray::fromStdString(text));
        last = text;
        return true;
    };
    if (!look())
        return fail(Failed, problem);
    if (!parser.isSet(watch))
        return Fine;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (!look())
            QCoreApplication::exit(fail(Failed, problem));
    });
    timer.start(kWatchIntervalMs);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    const Tool tool("pavo-accounts");
    return tool.end(run(argc, argv));
}
