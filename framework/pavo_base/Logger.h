#pragma once

#include "pavo_base/Export.h"

#include <log4cplus/logger.h>

#include <string>

/// Holder of the one log4cplus logger, named "pavo".
class PAVO_BASE_EXPORT Logger
{
public:
    Logger() = delete;

    /// The logger, for log4cplus' logging macros. Any thread may call, from the first static
    /// constructor to the last exit handler of the process. Without initialise() and without
    /// appenders of the application its records go nowhere.
    static log4cplus::Logger& logger();

    /// Sends records of \a level and above to standard error or, when \a file is not empty, to the
    /// end of that file (path in the system's narrow encoding), one line each: local time, level,
    /// thread, source file and line, function, text. Replaces the output of an earlier call and
    /// leaves other appenders alone. Any thread may call.
    /// \return false when the file cannot be written; nothing has changed then.
    static bool initialise(log4cplus::LogLevel level, const std::string& file = {});
};
