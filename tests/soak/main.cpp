#include "tests/soak/Soak.h"
#include "tests/support/RuntimeFolder.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

namespace {

enum ExitCode { Fine = 0, Failed = 1, WrongUsage = 2 };

} // namespace

int main(int argc, char** argv)
{
    int exitCode = 0;
    if (Role::runAsAsked(argc, argv, exitCode))
        return exitCode;
    // Static, as what is destroyed at exit still uses it.
    static const RuntimeFolder folder;
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(
        QStringLiteral("pavo-soak-%1").arg(QCoreApplication::applicationPid()));

    QCommandLineParser parser;
    const QCommandLineOption minutes(QStringLiteral("minutes"), QStringLiteral("How long."),
                                     QStringLiteral("minutes"), QStringLiteral("10"));
    const QCommandLineOption seed(
        QStringLiteral("seed"), QStringLiteral("What happens; a number of its own by default."),
        QStringLiteral("seed"), QString::number(QCoreApplication::applicationPid()));
    const QCommandLineOption csv(QStringLiteral("csv"),
                                 QStringLiteral("File that the samples are written to."),
                                 QStringLiteral("file"));
    parser.addOptions({minutes, seed, csv});
    const bool isParsed = parser.parse(QCoreApplication::arguments());
    const double length = parser.value(minutes).toDouble();
    if (!isParsed || length <= 0) {
        std::fputs("usage: Soak [--minutes N] [--seed N] [--csv FILE]\n", stderr);
        return WrongUsage;
    }
    std::printf("seed %s, %g minutes\n", parser.value(seed).toLatin1().constData(), length);
    std::fflush(stdout);
    try {
        Soak soak(parser.value(seed).toUInt(), 60 * length,
                  parser.value(csv).toLocal8Bit().toStdString());
        const bool isFlat = soak.run();
        std::puts(isFlat ? "PASSED" : "FAILED: something grows");
        return isFlat ? Fine : Failed;
    } catch (const SoakFailure& failure) {
        std::printf("FAILED: %s\n", failure.what());
        return Failed;
    }
}
