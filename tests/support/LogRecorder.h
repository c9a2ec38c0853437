#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/loglevel.h>

#include <string>
#include <vector>

/// One log record as a test wants to see it.
struct LogRecord
{
    log4cplus::LogLevel level;
    std::string text;
    std::string function;
    std::string file;
    int line;
};

/// Collects every record that the workbench's logger is given while it lives, from any thread.
class LogRecorder
{
public:
    LogRecorder();
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    std::vector<LogRecord> records() const;
    void clear();

    int count(log4cplus::LogLevel level, const std::string& text) const;
    bool has(log4cplus::LogLevel level, const std::string& text) const
    {
        return count(level, text) > 0;
    }
    /// How many records, of any level, begin so.
    int countBeginning(const std::string& beginning) const;
    /// The records of at least this level, as "LEVEL text", in order.
    std::vector<std::string> lines(log4cplus::LogLevel lowest = log4cplus::ALL_LOG_LEVEL) const;
    /// The same but for slow locks, which a loaded machine has anywhere.
    std::vector<std::string>
    linesButSlowLocks(log4cplus::LogLevel lowest = log4cplus::ALL_LOG_LEVEL) const;
    /// The records of warning level and above.
    std::vector<std::string> complaints() const;
    /// Waits, with the event loop running, until a pipe's writer has begun a write and not ended it
    /// for a while.
    bool waitUntilAWriteIsBlocked() const;
    /// Waits, with the event loop running, until the record is there.
    bool waitFor(log4cplus::LogLevel level, const std::string& text) const;

private:
    class Appender;
    log4cplus::SharedAppenderPtr m_appender;
    Appender* m_records;
};
