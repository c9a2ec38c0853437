#include "tests/soak/Soak.h"
#include "tests/support/RuntimeFolder.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <exception>

namespace {

enum ExitCode { Fine = 0, Failed = 1, WrongUsage = 2 };

int tell(Soak::Verdict verdict)
{
    switch (verdict) {
    case Soak::Verdict::Flat:
        std::puts("PASSED");
        return Fine;
    case Soak::Verdict::TooShortToTell:
        std::puts("PASSED, too short to judge growth");
        return Fine;
    case Soak::Verdict::Grows:
        break;
    }
    std::puts("FAILED: something grows or was not measured");
    return Failed;
}

int run(int argc, char** argv)
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
    if (!parser.parse(QCoreApplication::arguments())) {
        std::fputs("usage: Soak [--minutes N] [--seed N] [--csv FILE]\n", stderr);
        return WrongUsage;
    }
    const double length = parser.value(minutes).toDouble();
    if (!(length > 0)) {
        std::fputs("Soak: --minutes takes a number above 0\n", stderr);
        return WrongUsage;
    }
    std::printf("seed %s, %g minutes\n", parser.value(seed).toLatin1().constData(), length);
    std::fflush(stdout);
    Soak soak(parser.value(seed).toUInt(), 60 * length,
              parser.value(csv).toLocal8Bit().toStdString());
    return tell(soak.run());
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        std::printf("FAILED: %s\n", failure.what());
        return Failed;
    }
}
