// Messages and bytes, big and small, one writer and many.

#include "tests/process/PipeFixture.h"

#include <memory>
#include <vector>

using pavo::UniqueHandle;

namespace {

class MessagePipe : public ConnectedPipeTest
{
protected:
    void SetUp() override { connect(kMessageType); }
};

class BytePipe : public ConnectedPipeTest
{
protected:
    void SetUp() override { connect(kByteType); }
};

} // namespace

TEST_F(MessagePipe, oneWriteIsOneMessage)
{
    EXPECT_EQ(writePipe(m_client, "one"), kDone);
    EXPECT_EQ(writePipe(m_client, "second"), kDone);
    EXPECT_EQ(readPipe(m_host), done("one"));
    EXPECT_EQ(readPipe(m_host), done("second"));
}

TEST_F(MessagePipe, clientReadsBytesUnlessItAsksForMessages)
{
    EXPECT_EQ(writePipe(m_host, "abc"), kDone);
    EXPECT_EQ(writePipe(m_host, "def"), kDone);
    EXPECT_EQ(readAll(m_client, 6), done("abcdef"));

    EXPECT_EQ(setReadMode(m_client, PIPE_READMODE_MESSAGE), kDone);
    EXPECT_EQ(writePipe(m_host, "abc"), kDone);
    EXPECT_EQ(writePipe(m_host, "def"), kDone);
    EXPECT_EQ(readPipe(m_client), done("abc"));
    EXPECT_EQ(readPipe(m_client), done("def"));
}

TEST_F(MessagePipe, byteReaderGetsWhatSeveralWritesBrought)
{
    EXPECT_EQ(writePipe(m_host, "abc"), kDone);
    EXPECT_EQ(writePipe(m_host, "def"), kDone);
    EXPECT_EQ(readPipe(m_client, 4), done("abcd"));
    EXPECT_EQ(readPipe(m_client, 4), done("ef"));
}

TEST_F(MessagePipe, byteReaderWithASmallBufferLosesNothing)
{
    const std::string message = pattern(200'000);
    Worker writer([&] { return writePipe(m_host, message); });
    std::string all;
    while (all.size() < message.size()) {
        const Outcome part = readPipe(m_client, 7);
        ASSERT_EQ(part.error, ERROR_SUCCESS);
        ASSERT_FALSE(part.bytes.empty());
        all += part.bytes;
    }
    EXPECT_EQ(all, message);
    EXPECT_EQ(writer.outcome(), kDone);
}

TEST_F(MessagePipe, readerWithASmallBufferGetsTheRestNext)
{
    EXPECT_EQ(writePipe(m_client, "abcdefg"), kDone);
    EXPECT_EQ(writePipe(m_client, "next"), kDone);
    EXPECT_EQ(readPipe(m_host, 3), (Outcome{ERROR_MORE_DATA, "abc"}));
    EXPECT_EQ(readPipe(m_host, 3), (Outcome{ERROR_MORE_DATA, "def"}));
    EXPECT_EQ(readPipe(m_host, 3), done("g"));
    EXPECT_EQ(readPipe(m_host, 4), done("next"));
}

TEST_F(MessagePipe, bufferOfNoSizeOnlyWaits)
{
    EXPECT_EQ(writePipe(m_client, "abc"), kDone);
    EXPECT_EQ(readPipe(m_host, 0), Outcome{ERROR_MORE_DATA});
    EXPECT_EQ(readPipe(m_host), done("abc"));
}

TEST_F(MessagePipe, emptyMessageIsAMessage)
{
    EXPECT_EQ(writePipe(m_client, ""), kDone);
    EXPECT_EQ(writePipe(m_client, "x"), kDone);
    EXPECT_EQ(readPipe(m_host), done(""));
    EXPECT_EQ(readPipe(m_host), done("x"));
}

TEST_F(MessagePipe, emptyMessageEndsAByteReadToo)
{
    EXPECT_EQ(writePipe(m_host, ""), kDone);
    EXPECT_EQ(readPipe(m_client), done(""));
}

TEST_F(MessagePipe, readModeMayChangeWithinAMessage)
{
    EXPECT_EQ(writePipe(m_client, "abcdef"), kDone);
    EXPECT_EQ(readPipe(m_host, 2), (Outcome{ERROR_MORE_DATA, "ab"}));
    EXPECT_EQ(setReadMode(m_host, PIPE_READMODE_BYTE), kDone);
    EXPECT_EQ(readPipe(m_host, 2), done("cd"));
    EXPECT_EQ(setReadMode(m_host, PIPE_READMODE_MESSAGE), kDone);
    EXPECT_EQ(readPipe(m_host, 2), done("ef"));
}

TEST_F(MessagePipe, bigMessagesStayWhole)
{
    for (const std::size_t size : {32U * 1024 - 1, 32U * 1024, 32U * 1024 + 1, 16U * 1024 * 1024}) {
        const std::string message = pattern(size);
        Worker writer([&] { return writePipe(m_client, message); });
        const Outcome read = readPipe(m_host, 16U * 1024 * 1024);
        EXPECT_EQ(read.error, ERROR_SUCCESS);
        EXPECT_TRUE(read.bytes == message) << size;
        EXPECT_EQ(writer.outcome(), kDone);
    }
}

TEST_F(MessagePipe, bothDirectionsAtOnce)
{
    constexpr int kMessages = 500;
    EXPECT_EQ(setReadMode(m_client, PIPE_READMODE_MESSAGE), kDone);
    const std::string ping = pattern(3000, 1);
    const std::string pong = pattern(3000, 2);
    // A handle takes one synchronous call at a time, so each end has its turn.
    Worker echo([&] {
        Outcome outcome = kDone;
        for (int i = 0; i < kMessages && outcome == kDone; ++i) {
            outcome = readPipe(m_client);
            outcome = outcome == done(ping) ? writePipe(m_client, pong) : outcome;
        }
        return outcome;
    });
    for (int i = 0; i < kMessages; ++i) {
        ASSERT_EQ(writePipe(m_host, ping), kDone);
        ASSERT_EQ(readPipe(m_host), done(pong));
    }
    EXPECT_EQ(echo.outcome(), kDone);
}

TEST_F(MessagePipe, burstOfTenThousandArrivesInOrder)
{
    constexpr int kMessages = 10'000;
    Worker writer([&] {
        Outcome outcome = kDone;
        for (int i = 0; i < kMessages && outcome == kDone; ++i)
            outcome = writePipe(m_client, std::to_string(i));
        return outcome;
    });
    for (int i = 0; i < kMessages; ++i)
        ASSERT_EQ(readPipe(m_host), done(std::to_string(i)));
    EXPECT_EQ(writer.outcome(), kDone);
}

TEST_F(MessagePipe, messagesOfSeveralWritersDoNotMix)
{
    constexpr unsigned kWriters = 4;
    constexpr unsigned kEach = 50;
    constexpr std::size_t kSize = 100'000;
    std::vector<std::unique_ptr<Worker>> writers;
    for (unsigned writer = 0; writer < kWriters; ++writer)
        writers.push_back(std::make_unique<Worker>([this, writer] {
            Outcome outcome = kDone;
            for (unsigned i = 0; i < kEach && outcome == kDone; ++i)
                outcome = writePipe(m_client, pattern(kSize, writer));
            return outcome;
        }));
    std::vector<unsigned> counts(kWriters);
    for (unsigned i = 0; i < kWriters * kEach; ++i) {
        const Outcome read = readPipe(m_host, kSize);
        ASSERT_EQ(read.error, ERROR_SUCCESS);
        unsigned writer = 0;
        while (writer < kWriters && read.bytes != pattern(kSize, writer))
            ++writer;
        ASSERT_LT(writer, kWriters) << "torn message";
        ++counts[writer];
    }
    EXPECT_EQ(counts, std::vector<unsigned>(kWriters, kEach));
    for (const auto& writer : writers)
        EXPECT_EQ(writer->outcome(), kDone);
}

TEST_F(MessagePipe, noBufferIsRefused)
{
    DWORD count = 0;
    EXPECT_EQ(writePipe(m_client, "x"), kDone);
    EXPECT_FALSE(ReadFile(m_host.get(), nullptr, 5, &count, nullptr));
    EXPECT_FALSE(WriteFile(m_client.get(), nullptr, 5, &count, nullptr));
    EXPECT_EQ(readPipe(m_host), done("x"));
}

TEST_F(BytePipe, hasNoMessageMode)
{
    EXPECT_EQ(setReadMode(m_client, PIPE_READMODE_MESSAGE), Outcome{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(setReadMode(m_client, PIPE_READMODE_BYTE), kDone);
}

TEST_F(BytePipe, writesRunTogether)
{
    EXPECT_EQ(writePipe(m_client, "ab"), kDone);
    EXPECT_EQ(writePipe(m_client, ""), kDone);
    EXPECT_EQ(writePipe(m_client, "cd"), kDone);
    EXPECT_EQ(readPipe(m_host, 1), done("a"));
    EXPECT_EQ(readPipe(m_host), done("bcd"));
}

TEST_F(BytePipe, carriesMuch)
{
    constexpr DWORD kMuch = 4U * 1024 * 1024;
    const std::string bytes = pattern(kMuch);
    Worker writer([&] { return writePipe(m_client, bytes); });
    const Outcome all = readAll(m_host, bytes.size());
    EXPECT_EQ(all.error, ERROR_SUCCESS);
    EXPECT_TRUE(all.bytes == bytes);
    EXPECT_EQ(writer.outcome(), kDone);
}
