#include "platform/UniqueHandle.h"
#include "tests/process/HostProcess.h"

// A real host process that is killed at every moment. Each test is a process of its own, and must
// end as cleanly as it would with a host that lives.

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;

using HostDeathTest = HostProcessFixture;

TEST_F(HostDeathTest, BeforeTheOpen)
{
    ASSERT_TRUE(createPipes());
    host.kill();
    ASSERT_TRUE(startUp());
    ASSERT_TRUE(waitUntil([this] { return !codes.empty(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(codes, std::vector<int>{-1});
    for (const std::string& line : log.complaints())
        EXPECT_EQ(line, "ERROR Could not open pipe. GLE=2");
    EXPECT_FALSE(log.complaints().empty());
}

TEST_F(HostDeathTest, BetweenTheTwoOpens)
{
    ASSERT_TRUE(createPipes());
    // Another client has the second pipe: the workbench's writer waits for it.
    const HANDLE handle = CreateFileA((kPrefix + out).toUtf8().constData(), GENERIC_WRITE, 0,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    const pavo::UniqueHandle other(handle);
    ASSERT_TRUE(startUp());
    ASSERT_TRUE(tell("accept-in"));
    ASSERT_TRUE(log.waitFor(DEBUG_LOG_LEVEL, "init writer " + (kPrefix + out).toStdString()));
    host.kill();
    ASSERT_TRUE(waitUntil([this] { return !codes.empty(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(codes, std::vector<int>{-1});
    EXPECT_EQ(log.count(ERROR_LOG_LEVEL, "read data error 109"), 1);
    for (const std::string& line : log.complaints()) {
        EXPECT_TRUE(line == "ERROR read data error 109" ||
                    line.find("Could not open pipe") != std::string::npos)
            << line;
    }
}

TEST_F(HostDeathTest, BeforeItCreatedTheSecondPipe)
{
    ASSERT_TRUE(tell("create-in " + in.toUtf8()));
    ASSERT_TRUE(startUp());
    ASSERT_TRUE(tell("accept-in"));
    ASSERT_TRUE(log.waitFor(ERROR_LOG_LEVEL, "Could not open pipe. GLE=2"));
    EXPECT_TRUE(codes.empty()) << "the writer's failure is only logged";
    host.kill();
    ASSERT_TRUE(waitUntil([this] { return !codes.empty(); }));
    EXPECT_EQ(codes, std::vector<int>{-1});
}

TEST_F(HostDeathTest, InTheMiddleOfAFrame)
{
    ASSERT_TRUE(createPipes());
    ASSERT_TRUE(startUp());
    ASSERT_TRUE(tell("accept-in"));
    ASSERT_TRUE(tell("accept-out"));
    enterMainWindow();
    const QByteArray whole = frame(R"({"name":"OpenBaseInfoSettingWindow"})");
    ASSERT_TRUE(tell("write " + (whole + whole.left(20)).toHex()));
    ASSERT_TRUE(waitUntil([this] { return settings == 1; }));
    host.kill();
    ASSERT_TRUE(waitUntil([this] { return closed > 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(complaintsButWrites(), Lines{"ERROR read data error 109"});
    EXPECT_EQ(settings, 1);
    EXPECT_TRUE(codes.empty());
}

TEST_F(HostDeathTest, WhileIdleBeforeTheMainWindow)
{
    ASSERT_TRUE(createPipes());
    ASSERT_TRUE(startUp());
    ASSERT_TRUE(tell("accept-in"));
    ASSERT_TRUE(tell("accept-out"));
    host.kill();
    ASSERT_TRUE(waitUntil([this] { return !codes.empty(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(codes, std::vector<int>{-1});
    EXPECT_EQ(log.complaints(), Lines{"ERROR read data error 109"});
}

TEST_F(HostDeathTest, WhileIdleInTheMainWindow)
{
    ASSERT_TRUE(createPipes());
    ASSERT_TRUE(startUp());
    ASSERT_TRUE(tell("accept-in"));
    ASSERT_TRUE(tell("accept-out"));
    enterMainWindow();
    host.kill();
    ASSERT_TRUE(waitUntil([this] { return closed > 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(closed, 1);
    EXPECT_TRUE(codes.empty());
    EXPECT_EQ(complaintsButWrites(), Lines{"ERROR read data error 109"});
}

TEST_F(HostDeathTest, WhileTheWriterIsBlockedBecauseNobodyReads)
{
    ASSERT_TRUE(createPipes());
    ASSERT_TRUE(startUp());
    ASSERT_TRUE(tell("accept-in"));
    ASSERT_TRUE(tell("accept-out"));
    constexpr int kMessages = 5000; // Ten megabytes: more than any pipe holds.
    const std::string text(1900, 'x');
    for (int i = 0; i < kMessages; ++i)
        channel().openSetting(text);
    ASSERT_TRUE(log.waitUntilAWriteIsBlocked());
    enterMainWindow();
    host.kill();
    ASSERT_TRUE(waitUntil([this] { return closed > 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(closed, 1);
    EXPECT_LT(log.countBeginning("write data {"), kMessages);
    EXPECT_EQ(complaintsButWrites(), Lines{"ERROR read data error 109"});
}
