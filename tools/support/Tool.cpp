#include "tools/support/Tool.h"

#include "tools/support/Lines.h"
#include "tools/support/StandardOutput.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr int kFailed = 1;

/// The application's may become that of an installation.
const char* g_name = "";

} // namespace

Tool::Tool(const char* name)
{
    g_name = name;
    QCoreApplication::setApplicationName(Tool::name());
}

QString Tool::name()
{
    return QLatin1String(g_name);
}

int Tool::end(int exitCode) const
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return exitCode;
    complain(QStringLiteral("not all of the output could be written"));
    return exitCode == 0 ? kFailed : exitCode;
}

void print(const QByteArray& text)
{
    writeText(stdout, text);
    // Queued, since the application need not run yet.
    if (std::ferror(stdout) != 0)
        QMetaObject::invokeMethod(
            qApp, [] { QCoreApplication::exit(kFailed); }, Qt::QueuedConnection);
}

void complain(const QString& problem)
{
    writeText(stderr, QStringLiteral("%1: %2\n").arg(Tool::name(), printable(problem)).toUtf8());
}
