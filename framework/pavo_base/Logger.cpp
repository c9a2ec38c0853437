#include "pavo_base/Logger.h"

#include <log4cplus/consoleappender.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/initializer.h>
#include <log4cplus/layout.h>
#include <log4cplus/nullappender.h>

#include <fstream>

namespace {

// The output of initialise(), to find it among the application's appenders.
constexpr const char* kOutputName = "pavo.output";
constexpr const char* kPattern = "%D{%Y-%m-%d %H:%M:%S.%q} %-5p [%t] %F:%L %M - %m%n";

struct Holder
{
    Holder()
    {
        // log4cplus complains on standard error about a logger that has no appender at all.
        logger.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    }

    log4cplus::Initializer initializer;
    log4cplus::Logger logger = log4cplus::Logger::getInstance("pavo");
};

} // namespace

log4cplus::Logger& Logger::logger()
{
    // Never destroyed: that would shut log4cplus down, while exit handlers may still write records.
    static auto* const holder = new Holder;
    return holder->logger;
}

bool Logger::initialise(log4cplus::LogLevel level, const std::string& file)
{
    log4cplus::SharedAppenderPtr output;
    if (file.empty()) {
        output = new log4cplus::ConsoleAppender(true, true);
    } else {
        // The appender reports a file that it cannot open to nobody.
        if (!std::ofstream(file, std::ios::app))
            return false;
        output = new log4cplus::FileAppender(file, std::ios::app);
    }
    output->setName(kOutputName);
    output->setLayout(std::make_unique<log4cplus::PatternLayout>(kPattern));

    if (const auto earlier = logger().getAppender(kOutputName); earlier)
        logger().removeAppender(earlier);
    logger().addAppender(output);
    logger().setLogLevel(level);
    return true;
}
