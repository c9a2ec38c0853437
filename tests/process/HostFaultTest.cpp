#include "tests/process/HostProcess.h"

// A real host process that lives and misbehaves. Each test is a process of its own.

namespace {

constexpr const char* kOpenSettings = R"({"name":"OpenBaseInfoSettingWindow"})";

class HostFaultTest : public HostProcessFixture
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(connect());
        enterMainWindow();
        // What entering has sent is of no interest.
        ASSERT_TRUE(waitUntil([this] { return log.countBeginning("write data ") == 1; }));
    }

    /// Sends so many texts of `size` bytes, each with its number.
    static void sendMessages(int count, std::size_t size)
    {
        for (int i = 0; i < count; ++i) {
            std::string text = "message " + std::to_string(i) + ' ';
            text.resize(size, 'x');
            channel().openSetting(text);
        }
    }

    const QByteArray message = frame(kOpenSettings);
};

/// The first length that is more than a message may have.
constexpr const char* kBadLength = "write fd0f0000";

class HostFaultAtStartUpTest : public HostProcessFixture
{
protected:
    void SetUp() override { ASSERT_TRUE(connect()); }
};

/// Nothing is connected yet.
using HostNamesTest = HostProcessFixture;

} // namespace

TEST_F(HostFaultTest, HostThatDoesNotReadHoldsNobodyUp)
{
    sendMessages(5000, 1900);
    ASSERT_TRUE(log.waitUntilAWriteIsBlocked());
    ASSERT_TRUE(tell("write " + message.toHex()));
    EXPECT_TRUE(waitUntil([this] { return settings == 1; })) << "the other direction is served";
    EXPECT_EQ(log.complaints(), Lines{});
    // Leaving has not to wait for the host either: that is how this test ends.
}

TEST_F(HostFaultTest, HostThatReadsLateMissesNothing)
{
    ASSERT_TRUE(tell("close-out"));
    ASSERT_TRUE(tell("close-in"));
    ASSERT_TRUE(waitUntil([this] { return closed == 1; }));
    ASSERT_TRUE(connect());
    constexpr int kMessages = 500; // Nearly a megabyte: more than any pipe holds.
    sendMessages(kMessages, 1900);
    ASSERT_TRUE(log.waitUntilAWriteIsBlocked());
    EXPECT_TRUE(tell("read " + QByteArray::number(kMessages))) << "all, in their order";
}

TEST_F(HostFaultTest, HostThatStopsInAFrameDelaysThatMessageAlone)
{
    ASSERT_TRUE(tell("write " + message.left(20).toHex()));
    sendMessages(1, 100);
    ASSERT_TRUE(waitUntil([this] { return log.countBeginning("write data ") == 2; }));
    EXPECT_EQ(settings, 0);
    ASSERT_TRUE(tell("write " + message.mid(20).toHex()));
    EXPECT_TRUE(waitUntil([this] { return settings == 1; }));
    EXPECT_EQ(log.complaints(), Lines{});
}

TEST_F(HostFaultTest, HostThatWritesByteByByteIsUnderstood)
{
    for (const char byte : message + message)
        ASSERT_TRUE(tell("write " + QByteArray(1, byte).toHex()));
    EXPECT_TRUE(waitUntil([this] { return settings == 2; }));
    EXPECT_EQ(log.complaints(), Lines{});
}

TEST_F(HostFaultTest, ClosingThePipeThatIsReadClosesBoth)
{
    ASSERT_TRUE(tell("close-in"));
    ASSERT_TRUE(waitUntil([this] { return closed > 0; }));
    EXPECT_TRUE(tell("read-end")) << "the workbench has let go of the other one, too";
    EXPECT_EQ(log.complaints(), Lines{"ERROR read data error 109"});
    log.clear();
    sendMessages(10, 100);
    QCoreApplication::processEvents();
    EXPECT_EQ(log.lines(), Lines{}) << "what is sent afterwards is dropped";
    EXPECT_EQ(closed, 1);
    EXPECT_TRUE(codes.empty());
}

TEST_F(HostFaultTest, ClosingThePipeThatIsWrittenFailsTheWritesAlone)
{
    ASSERT_TRUE(tell("close-out"));
    log.clear();
    sendMessages(3, 100);
    ASSERT_TRUE(waitUntil([this] { return log.complaints().size() == 3; }));
    EXPECT_EQ(log.complaints(), Lines(3, "ERROR write data failed 0"));
    ASSERT_TRUE(tell("write " + message.toHex()));
    EXPECT_TRUE(waitUntil([this] { return settings == 1; })) << "the other direction is served";
    EXPECT_EQ(closed, 0);
}

TEST_F(HostFaultTest, BadLengthIsTheEndOfTheHost)
{
    ASSERT_TRUE(tell(kBadLength));
    ASSERT_TRUE(waitUntil([this] { return closed > 0; }));
    EXPECT_TRUE(tell("read-end")) << "the workbench has let go of the other pipe, too";
    EXPECT_EQ(log.complaints(), Lines{"ERROR read data error 13"});
    EXPECT_EQ(closed, 1);
    EXPECT_TRUE(codes.empty());
}

TEST_F(HostFaultAtStartUpTest, BadLengthIsTheEndOfTheHost)
{
    ASSERT_TRUE(tell(kBadLength));
    ASSERT_TRUE(waitUntil([this] { return !codes.empty(); }));
    EXPECT_TRUE(tell("read-end")) << "the workbench has let go of the other pipe, too";
    EXPECT_EQ(log.complaints(), Lines{"ERROR read data error 13"});
    enterMainWindow();
    QCoreApplication::processEvents();
    EXPECT_EQ(codes, std::vector<int>{-1});
    EXPECT_EQ(closed, 0);
}

TEST_F(HostFaultAtStartUpTest, ClosingThePipeThatIsReadClosesBoth)
{
    ASSERT_TRUE(tell("close-in"));
    ASSERT_TRUE(waitUntil([this] { return !codes.empty(); }));
    EXPECT_TRUE(tell("read-end")) << "the workbench has let go of the other one, too";
    EXPECT_EQ(log.complaints(), Lines{"ERROR read data error 109"});
    enterMainWindow();
    QCoreApplication::processEvents();
    EXPECT_EQ(codes, std::vector<int>{-1});
    EXPECT_EQ(closed, 0) << "it is reported once";
}

TEST_F(HostFaultAtStartUpTest, ClosingThePipeThatIsWrittenFailsTheWritesAlone)
{
    ASSERT_TRUE(tell("close-out"));
    channel().activePlatform();
    ASSERT_TRUE(waitUntil([this] { return !log.complaints().empty(); }));
    enterMainWindow();
    ASSERT_TRUE(waitUntil([this] { return log.complaints().size() == 2; }));
    EXPECT_EQ(log.complaints(), Lines(2, "ERROR write data failed 0"));
    ASSERT_TRUE(tell("write " + frame(kOpenSettings).toHex()));
    EXPECT_TRUE(waitUntil([this] { return settings == 1; })) << "the other direction is served";
    EXPECT_TRUE(codes.empty());
    EXPECT_EQ(closed, 0);
}

TEST_F(HostFaultTest, ReopenedNamesAreTakenByTheNextStartUpOnly)
{
    ASSERT_TRUE(tell("close-in"));
    ASSERT_TRUE(tell("close-out"));
    ASSERT_TRUE(waitUntil([this] { return closed == 1; }));
    ASSERT_TRUE(createPipes());
    host.say("accept-in");
    EXPECT_EQ(host.nextLine(300), "") << "nobody comes back by himself";
    ASSERT_TRUE(startUp());
    EXPECT_EQ(host.nextLine(), "ok");
    ASSERT_TRUE(tell("accept-out"));
    enterMainWindow();
    ASSERT_TRUE(tell("write " + message.toHex()));
    EXPECT_TRUE(waitUntil([this] { return settings == 1; }));
    EXPECT_EQ(closed, 1);
    EXPECT_TRUE(codes.empty());
}

TEST_F(HostNamesTest, SecondHostOfANameIsRefusedAndTheFirstGoesOn)
{
    ASSERT_TRUE(connect());
    RoleProcess second("host", {});
    second.say("create-in " + in.toStdString());
    EXPECT_EQ(second.nextLine(), "failed");
    second.say("create-out " + out.toStdString());
    EXPECT_EQ(second.nextLine(), "failed");
    enterMainWindow();
    ASSERT_TRUE(tell("write " + frame(kOpenSettings).toHex()));
    EXPECT_TRUE(waitUntil([this] { return settings == 1; }));
    EXPECT_EQ(log.complaints(), Lines{});
}

TEST_F(HostNamesTest, NamesThatAreTooLongAreNotThere)
{
    for (const int length : {300, 5000, 100000}) {
        // The last round's writer may have something to log yet.
        channel().startUp(QString(), nullptr, nullptr);
        codes.clear();
        log.clear();
        const QString name = kPrefix + textOfUnits(length);
        ASSERT_TRUE(channel().startUp(
            QStringLiteral("pipe?param=") + name + QLatin1Char('&') + name,
            [this](int code, const std::string&, const QString&) { codes.push_back(code); },
            nullptr));
        ASSERT_TRUE(waitUntil([this] { return !codes.empty(); }));
        EXPECT_EQ(codes, std::vector<int>{-1});
        // The writer may have been closed with the reader before it came to it.
        EXPECT_GE(log.countBeginning("Could not open pipe. GLE="), 1);
        EXPECT_EQ(log.countBeginning("Could not open pipe. GLE=0"), 0);
    }
}
