#include "ipc/KTChannelManager.h"
#include "platform/HostPipe.h"
#include "platform/UniqueHandle.h"
#include "tests/support/Host.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <map>
#include <memory>
#include <string>

// A real host process that is killed at every moment. Each test is a process of its own, and must
// end as cleanly as it would with a host that lives.

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::WARN_LOG_LEVEL;

namespace {

struct Pipes
{
    std::unique_ptr<pavo::HostPipe> in;
    std::unique_ptr<pavo::HostPipe> out;
};

std::unique_ptr<pavo::HostPipe> create(const std::string& name, pavo::HostPipe::Direction direction)
{
    auto pipe = std::make_unique<pavo::HostPipe>(QString::fromStdString(name), direction);
    return pipe->isOpen() ? std::move(pipe) : nullptr;
}

using Command = bool (*)(Pipes&, const std::string& argument);

const std::map<std::string, Command>& commands()
{
    static const std::map<std::string, Command> all = {
        {"create-in",
         [](Pipes& pipes, const std::string& name) {
             pipes.in = create(name, pavo::HostPipe::Direction::HostWrites);
             return pipes.in != nullptr;
         }},
        {"create-out",
         [](Pipes& pipes, const std::string& name) {
             pipes.out = create(name, pavo::HostPipe::Direction::HostReads);
             return pipes.out != nullptr;
         }},
        {"accept-in", [](Pipes& pipes, const std::string&) { return pipes.in->awaitClient(); }},
        {"accept-out", [](Pipes& pipes, const std::string&) { return pipes.out->awaitClient(); }},
        {"write",
         [](Pipes& pipes, const std::string& hex) {
             return pipes.in->write(QByteArray::fromHex(QByteArray::fromStdString(hex)));
         }},
    };
    return all;
}

/// A host that does what the test tells it, line by line, and answers each with "ok" or "failed".
const Role kHost("host", [](const QStringList&) {
    Pipes pipes;
    for (std::string line = nextLineFromParent(); !line.empty(); line = nextLineFromParent()) {
        const auto blank = line.find(' ');
        const auto command = commands().find(line.substr(0, blank));
        const std::string argument = blank == std::string::npos ? "" : line.substr(blank + 1);
        const bool ok = command != commands().end() && command->second(pipes, argument);
        sayToParent(ok ? "ok" : "failed");
    }
    return 0;
});

const QString kPrefix = QStringLiteral("\\\\.\\pipe\\");
using Lines = std::vector<std::string>;

class HostDeathTest : public testing::Test
{
protected:
    static KTChannelManager& channel() { return *KTChannelManager::sharedInstance(); }

    /// Has the host do what the line says; whether it could.
    bool tell(const QByteArray& line)
    {
        host.say(line.toStdString());
        return host.nextLine() == "ok";
    }

    bool createPipes()
    {
        return tell("create-in " + in.toUtf8()) && tell("create-out " + out.toUtf8());
    }

    bool startUp()
    {
        return channel().startUp(
            QStringLiteral("pipe?param=") + kPrefix + in + QLatin1Char('&') + kPrefix + out,
            [this](int code, const std::string&, const QString&) { codes.push_back(code); },
            nullptr);
    }

    void enterMainWindow()
    {
        auto* observer = new KTChannelObserver;
        observer->onPipeClosed = [this] { ++closed; };
        observer->onOpenBaseInfoSetting = [this] { ++settings; };
        channel().enterMainUI(0, observer);
    }

    /// The complaints without those of writes, of which there may be any number.
    Lines complaintsButWrites() const
    {
        Lines lines;
        for (const std::string& line : log.complaints()) {
            if (line.rfind("ERROR write data failed ", 0) != 0)
                lines.push_back(line);
        }
        return lines;
    }

    void TearDown() override
    {
        channel().enterMainUI(0, nullptr);
        channel().startUp(QString(), nullptr, nullptr);
    }

    LogRecorder log;
    RoleProcess host{"host", {}};
    const QString in = uniquePipeName(QStringLiteral("in"));
    const QString out = uniquePipeName(QStringLiteral("out"));
    std::vector<int> codes;
    int closed = 0;
    int settings = 0;
};

} // namespace

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
