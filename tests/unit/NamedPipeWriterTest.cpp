#include "tests/support/Host.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/PipeProbe.h"
#include "tests/support/RepeatingThreads.h"

#include <gtest/gtest.h>

#include <array>

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;
using pavo::HostPipe;

namespace {

class NamedPipeWriter : public testing::Test
{
protected:
    void open()
    {
        ASSERT_TRUE(host.isOpen());
        writer.pipe.startWriterThread(host.fullName());
        ASSERT_TRUE(host.waitForClient());
    }

    /// Sends the text and expects exactly `bytes` as one message.
    void expectMessage(const QString& text, const QByteArray& bytes)
    {
        const std::size_t before = host.messages().count();
        writer.pipe.sendData(text);
        ASSERT_TRUE(host.messages().waitForCount(before + 1));
        EXPECT_EQ(host.messages().values().back(), bytes);
    }

    LogRecorder log;
    HostReader host{uniquePipeName()};
    PipeProbe writer{NamedPipe::Writer};
};

QByteArray lengthBytes(int length)
{
    return frame(QByteArray(length, 'x')).left(4);
}

} // namespace

TEST_F(NamedPipeWriter, AsciiTextIsWrittenWhole)
{
    open();
    expectMessage(QStringLiteral("{}"), QByteArray("\x02\0\0\0{}", 6));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "init writer " + host.fullName().toStdString()));
    EXPECT_TRUE(log.waitFor(DEBUG_LOG_LEVEL, "write data {}"));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "write packet {}"));
}

TEST_F(NamedPipeWriter, PrefixCountsBytesAndPayloadIsCutAtUtf16Units)
{
    open();
    struct Row
    {
        const char* utf8;
        int units;
    };
    constexpr std::array<Row, 6> rows = {{{"\xC3\xA9", 1},
                                          {"\xE4\xBD\xA0\xE5\xA5\xBD", 2},
                                          {"\xF0\x9F\x98\x80", 2},
                                          {"a\xC3\xA9z", 3},
                                          {"ab\xE4\xBD\xA0z", 4},
                                          {"\xF0\x9F\x98\x80\xF0\x9F\x98\x80!", 5}}};
    for (const Row& row : rows) {
        const QByteArray utf8(row.utf8);
        expectMessage(QString::fromUtf8(utf8), lengthBytes(utf8.size()) + utf8.left(row.units));
        EXPECT_TRUE(log.waitFor(DEBUG_LOG_LEVEL, std::string("write data ") + row.utf8));
    }
}

TEST_F(NamedPipeWriter, LongestTextIs2043Units)
{
    open();
    const QString longest = textOfUnits(2043);
    writer.pipe.sendData(textOfUnits(2044));
    writer.pipe.sendData(QString());
    writer.pipe.sendData(QStringLiteral(""));
    writer.pipe.sendData(textOfUnits(5000));
    expectMessage(longest, lengthBytes(2043) + longest.toUtf8());
    EXPECT_EQ(host.messages().values().back().size(), 2047);
    expectMessage(QStringLiteral("after"), frame("after"));
    EXPECT_EQ(host.messages().count(), 2U) << "what is too long or empty is not sent";
    EXPECT_TRUE(log.complaints().empty());
    EXPECT_EQ(log.countBeginning("write packet "), 2) << "nor logged";
}

TEST_F(NamedPipeWriter, LongestTextOfWideCharactersFitsTheBuffer)
{
    open();
    const QString wide = textOfUnits(2043, QString::fromUtf8("\xE4\xBD\xA0"));
    expectMessage(wide, lengthBytes(3 * 2043) + wide.toUtf8().left(2043));
}

TEST_F(NamedPipeWriter, LoneSurrogateIsWrittenAndReadsNothingBeyondTheText)
{
    open();
    const QString lone = QString(QChar(0xD800)) + QStringLiteral("a");
    const QByteArray utf8 = lone.toUtf8();
    expectMessage(lone, lengthBytes(utf8.size()) + utf8.left(2));
}

TEST_F(NamedPipeWriter, TextsOfOneThreadKeepTheirOrder)
{
    open();
    std::vector<QByteArray> expected;
    for (int i = 0; i < 2000; ++i) {
        writer.pipe.sendData(QString::number(i));
        expected.push_back(frame(QByteArray::number(i)));
    }
    ASSERT_TRUE(host.messages().waitForCount(expected.size()));
    EXPECT_EQ(host.messages().values(), expected);
}

TEST_F(NamedPipeWriter, BytePipeCannotBeUsed)
{
    HostReader bytes(uniquePipeName(), HostPipe::Kind::Byte);
    writer.pipe.startWriterThread(bytes.fullName());
    ASSERT_TRUE(log.waitFor(ERROR_LOG_LEVEL, "set pipe state failed"));
    ASSERT_TRUE(log.waitFor(INFO_LOG_LEVEL, "NamedPipe::closePipe leave"));
    ASSERT_TRUE(bytes.waitForEnd()) << "the handle is closed";
    writer.pipe.sendData(QStringLiteral("dropped"));
    writer.pipe.closePipe();
    EXPECT_EQ(writer.exits.count(), 0U);
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR set pipe state failed"});
    EXPECT_EQ(bytes.messages().count(), 0U);
}

TEST_F(NamedPipeWriter, HostThatHasGoneFailsEachWriteAndLeavesThePipeOpen)
{
    auto gone = std::make_unique<HostReader>(uniquePipeName());
    writer.pipe.startWriterThread(gone->fullName());
    writer.pipe.sendData(QStringLiteral("arrives"));
    ASSERT_TRUE(gone->messages().waitForCount(1));
    gone.reset();
    writer.pipe.sendData(QStringLiteral("one"));
    writer.pipe.sendData(QStringLiteral("two"));
    ASSERT_TRUE(waitUntil([&] { return log.count(ERROR_LOG_LEVEL, "write data failed 0") == 2; }));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "write packet two"));
    EXPECT_FALSE(log.has(DEBUG_LOG_LEVEL, "write data two"));
    EXPECT_EQ(writer.exits.count(), 0U);
}

TEST_F(NamedPipeWriter, PipeThatIsNotThereIsReportedAtOnce)
{
    writer.pipe.startWriterThread(QStringLiteral("\\\\.\\pipe\\") + uniquePipeName());
    ASSERT_TRUE(writer.exits.waitForCount(1));
    writer.pipe.sendData(QStringLiteral("dropped"));
    QMetaObject::invokeMethod(
        &writer.pipe, [] {}, Qt::BlockingQueuedConnection);
    EXPECT_EQ(log.countBeginning("write "), 0);
    writer.pipe.closePipe();
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR Could not open pipe. GLE=2"});
    EXPECT_EQ(writer.exits.count(), 1U);
}

TEST_F(NamedPipeWriter, ClosingWhileAWriteIsBlockedIsSilentAndDropsWhatIsQueued)
{
    HostPipe deaf(uniquePipeName(), HostPipe::Direction::HostReads);
    writer.pipe.startWriterThread(deaf.fullName());
    ASSERT_TRUE(deaf.awaitClient());
    constexpr int kTexts = 5000; // Ten megabytes: more than any pipe holds.
    for (int i = 0; i < kTexts; ++i)
        writer.pipe.sendData(textOfUnits(2043));
    ASSERT_TRUE(log.waitUntilAWriteIsBlocked());
    writer.pipe.closePipe();
    EXPECT_LT(log.countBeginning("write data "), kTexts);
    EXPECT_TRUE(log.complaints().empty());
    EXPECT_EQ(writer.exits.count(), 0U);
}

TEST_F(NamedPipeWriter, ClosingWhileOtherThreadsSendNeverHangs)
{
    for (int round = 0; round < 20; ++round) {
        HostReader ownHost(uniquePipeName());
        PipeProbe probe(NamedPipe::Writer);
        probe.pipe.startWriterThread(ownHost.fullName());
        const RepeatingThreads senders(4,
                                       [&](int) { probe.pipe.sendData(QStringLiteral("text")); });
        ASSERT_TRUE(ownHost.messages().waitForCount(10));
        probe.pipe.closePipe();
    }
    EXPECT_TRUE(log.complaints().empty());
}
