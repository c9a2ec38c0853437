#include "tests/support/LogRecorder.h"

#include "pavo_base/Logger.h"
#include "tests/support/Wait.h"

#include <QElapsedTimer>

#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <algorithm>
#include <functional>
#include <mutex>

class LogRecorder::Appender : public log4cplus::Appender
{
public:
    ~Appender() override { destructorImpl(); }

    void close() override { closed = true; }

    std::vector<LogRecord> records() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_records;
    }

    int count(const std::function<bool(const LogRecord&)>& matches) const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return static_cast<int>(std::count_if(m_records.begin(), m_records.end(), matches));
    }

    void clear()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_records.clear();
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_records.push_back({event.getLogLevel(), event.getMessage(), event.getFunction(),
                             event.getFile(), event.getLine()});
    }

private:
    mutable std::mutex m_mutex;
    std::vector<LogRecord> m_records;
};

LogRecorder::LogRecorder()
    : m_appender(new Appender)
    , m_records(static_cast<Appender*>(m_appender.get()))
{
    Logger::logger().setLogLevel(log4cplus::ALL_LOG_LEVEL);
    Logger::logger().setAdditivity(false);
    Logger::logger().addAppender(m_appender);
}

LogRecorder::~LogRecorder()
{
    Logger::logger().removeAppender(m_appender);
}

std::vector<LogRecord> LogRecorder::records() const
{
    return m_records->records();
}

void LogRecorder::clear()
{
    m_records->clear();
}

int LogRecorder::count(log4cplus::LogLevel level, const std::string& text) const
{
    return m_records->count(
        [&](const LogRecord& record) { return record.level == level && record.text == text; });
}

int LogRecorder::countBeginning(const std::string& beginning) const
{
    return m_records->count(
        [&](const LogRecord& record) { return record.text.rfind(beginning, 0) == 0; });
}

std::vector<std::string> LogRecorder::lines(log4cplus::LogLevel lowest) const
{
    std::vector<std::string> lines;
    for (const LogRecord& record : records()) {
        if (record.level >= lowest)
            lines.push_back(log4cplus::getLogLevelManager().toString(record.level) + " " +
                            record.text);
    }
    return lines;
}

std::vector<std::string> LogRecorder::linesButSlowLocks(log4cplus::LogLevel lowest) const
{
    std::vector<std::string> all = lines(lowest);
    const auto isSlowLock = [](const std::string& line) {
        return line.rfind("WARN shared memory lock ", 0) == 0;
    };
    all.erase(std::remove_if(all.begin(), all.end(), isSlowLock), all.end());
    return all;
}

std::vector<std::string> LogRecorder::complaints() const
{
    return lines(log4cplus::WARN_LOG_LEVEL);
}

bool LogRecorder::waitFor(log4cplus::LogLevel level, const std::string& text) const
{
    return waitUntil([&] { return has(level, text); });
}

bool LogRecorder::waitUntilAWriteIsBlocked() const
{
    constexpr int kWhileMs = 300;
    QElapsedTimer still;
    int last = -1;
    return waitUntil([&] {
        const int begun = countBeginning("write packet ");
        if (begun != last)
            still.start();
        last = begun;
        return begun == countBeginning("write data ") + 1 && still.hasExpired(kWhileMs);
    });
}
