#include "fuzz/support/Process.h"

#include "pavo_base/Logger.h"
#include "tests/support/RuntimeFolder.h"

#include <QCoreApplication>

void prepareProcess()
{
    static const RuntimeFolder folder;
    static int argumentCount = 1;
    static char name[] = "fuzz";
    static char* arguments[] = {name, nullptr};
    // Static, as the end of the process runs what the library has registered for it.
    static const QCoreApplication application(argumentCount, arguments);
    setLogging(false);
}

void setLogging(bool enabled)
{
    Logger::logger().setLogLevel(enabled ? log4cplus::ALL_LOG_LEVEL : log4cplus::OFF_LOG_LEVEL);
}
