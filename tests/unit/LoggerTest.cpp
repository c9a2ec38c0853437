#include "pavo_base/Logger.h"

#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>
#include <log4cplus/appender.h>
#include <log4cplus/loggingmacros.h>
#include <log4cplus/spi/loggingevent.h>

#include <cstdlib>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

class CollectingAppender : public log4cplus::Appender
{
public:
    ~CollectingAppender() override { destructorImpl(); }

    void close() override { closed = true; }

    [[nodiscard]] std::vector<std::string> messages() const
    {
        const std::lock_guard lock(m_mutex);
        return m_messages;
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        const std::lock_guard lock(m_mutex);
        m_messages.push_back(event.getMessage());
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_messages;
};

std::vector<std::string> lines(const std::string& file)
{
    std::vector<std::string> found;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        found.push_back(line);
    return found;
}

// The logger is one for the whole process: each test puts it back.
class LoggerTest : public testing::Test
{
protected:
    LoggerTest()
        : m_collector(new CollectingAppender)
    {
        Logger::logger().setLogLevel(log4cplus::TRACE_LOG_LEVEL);
        Logger::logger().addAppender(log4cplus::SharedAppenderPtr(m_collector));
    }

    ~LoggerTest() override
    {
        Logger::logger().removeAllAppenders(); // a file in the folder below can be removed then
    }

    std::string path(const char* name) const
    {
        return m_folder.filePath(QString::fromUtf8(name)).toStdString();
    }

    [[nodiscard]] std::vector<std::string> collected() const { return m_collector->messages(); }

private:
    const QTemporaryDir m_folder;
    CollectingAppender* const m_collector; // belongs to the logger
};

// log4cplus' threads are there from the start: a child has to begin anew.
class LoggerDeathTest : public testing::Test
{
protected:
    LoggerDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

} // namespace

TEST_F(LoggerTest, isOneNamedLogger)
{
    EXPECT_EQ(Logger::logger().getName(), "pavo");
    log4cplus::Logger* fromThread = nullptr;
    std::thread([&] { fromThread = &Logger::logger(); }).join();
    EXPECT_EQ(fromThread, &Logger::logger());
}

TEST_F(LoggerTest, losesNoRecordOfAnyThread)
{
    constexpr int kThreads = 8;
    constexpr int kRecords = 200;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([thread] {
            for (int record = 0; record < kRecords; ++record)
                LOG4CPLUS_INFO(Logger::logger(), thread << ' ' << record);
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    std::vector<int> next(kThreads);
    for (const std::string& message : collected()) {
        const std::size_t blank = message.find(' ');
        const auto thread = static_cast<std::size_t>(std::stoi(message));
        EXPECT_EQ(std::stoi(message.substr(blank)), next.at(thread)++);
    }
    EXPECT_EQ(next, std::vector<int>(kThreads, kRecords));
}

TEST_F(LoggerTest, writesAFile)
{
    const std::string file = path("log");
    ASSERT_TRUE(Logger::initialise(log4cplus::WARN_LOG_LEVEL, file));
    LOG4CPLUS_INFO(Logger::logger(), "too low");
    const int line = __LINE__ + 1;
    LOG4CPLUS_WARN(Logger::logger(), "caf\xC3\xA9 " << 7);

    const std::vector<std::string> written = lines(file);
    ASSERT_EQ(written.size(), 1U);
    const std::string& record = written.front();
    EXPECT_NE(record.find(" WARN "), std::string::npos) << record;
    EXPECT_NE(record.find("LoggerTest.cpp:" + std::to_string(line) + " "), std::string::npos)
        << record;
    EXPECT_NE(record.find("TestBody"), std::string::npos) << record;
    const std::string text = " - caf\xC3\xA9 7";
    ASSERT_GT(record.size(), text.size());
    EXPECT_EQ(record.substr(record.size() - text.size()), text);
    EXPECT_EQ(collected(), std::vector<std::string>{"caf\xC3\xA9 7"});
}

TEST_F(LoggerTest, writesToOneFileAtATimeAndAppends)
{
    ASSERT_TRUE(Logger::initialise(log4cplus::INFO_LOG_LEVEL, path("first")));
    LOG4CPLUS_INFO(Logger::logger(), "one");
    ASSERT_TRUE(Logger::initialise(log4cplus::INFO_LOG_LEVEL, path("second")));
    LOG4CPLUS_INFO(Logger::logger(), "two");
    ASSERT_TRUE(Logger::initialise(log4cplus::INFO_LOG_LEVEL, path("first")));
    LOG4CPLUS_INFO(Logger::logger(), "three");
    EXPECT_EQ(lines(path("first")).size(), 2U);
    EXPECT_EQ(lines(path("second")).size(), 1U);
}

TEST_F(LoggerTest, keepsItsOutputWhenAFileCannotBeWritten)
{
    ASSERT_TRUE(Logger::initialise(log4cplus::INFO_LOG_LEVEL, path("log")));
    EXPECT_FALSE(Logger::initialise(log4cplus::ERROR_LOG_LEVEL, path("no/such/folder")));
    LOG4CPLUS_INFO(Logger::logger(), "record");
    EXPECT_EQ(lines(path("log")).size(), 1U);
}

TEST_F(LoggerDeathTest, isSilentBeforeAnyConfiguration)
{
    const auto log = [] {
        LOG4CPLUS_ERROR(Logger::logger(), "nobody listens");
        std::exit(0);
    };
    EXPECT_EXIT(log(), testing::ExitedWithCode(0), "^$");
}

TEST_F(LoggerDeathTest, worksInExitHandlersAndOnStandardError)
{
    const auto logAtExit = [] {
        std::atexit([] { LOG4CPLUS_INFO(Logger::logger(), "late " << 7); });
        Logger::initialise(log4cplus::INFO_LOG_LEVEL);
        std::exit(0);
    };
    EXPECT_EXIT(logAtExit(), testing::ExitedWithCode(0), "INFO .*LoggerTest.cpp:.* - late 7");
}
