#include "tests/support/Host.h"
#include "tests/support/Memory.h"
#include "tests/support/PipeProbe.h"
#include "tests/support/Wait.h"

#include "ipc/pipe/NamedPipe_win.h"
#include "pavo_base/Logger.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <array>

using pavo::HostPipe;

namespace {

constexpr int kMessages = 200000;
constexpr int kDeadline = 300000;
/// Every message carries this much beside its number: 200 000 texts that are kept are more than
/// 80 MiB.
constexpr int kPadding = 200;
/// Qt's event queue keeps its capacity, 24 bytes for each event that ever waited at once.
constexpr std::size_t kMaxGrowth = 16 * 1024 * 1024;

class NamedPipeFlood : public testing::Test
{
protected:
    void SetUp() override { Logger::logger().setLogLevel(log4cplus::OFF_LOG_LEVEL); }

    static void expectMemoryBack(std::size_t before)
    {
        if (kHeapIsMeasurable) {
            EXPECT_LT(heapBytesInUse(), before + kMaxGrowth);
        }
    }
};

QByteArray numbered(int number)
{
    return QByteArray::number(number) + ' ' + QByteArray(kPadding, 'p');
}

/// Has the host write `count` messages, several in one write, and expects each once, whole and in
/// order on this thread.
void floodInbound(HostPipe& host, const NamedPipe& reader, int count)
{
    QObject receiver;
    int received = 0;
    int wrong = 0;
    QObject::connect(&reader, &NamedPipe::sigReadyRead, &receiver, [&](const QString& text) {
        wrong += text.toUtf8() == numbered(received) ? 0 : 1;
        ++received;
    });
    std::thread writer([&] {
        QByteArray batch;
        for (int i = 0; i < count; ++i) {
            batch += frame(numbered(i));
            if (i % 16 == 15 || i == count - 1) {
                host.write(batch);
                batch.clear();
            }
        }
    });
    EXPECT_TRUE(waitUntil([&] { return received >= count; }, kDeadline));
    writer.join();
    EXPECT_EQ(received, count);
    EXPECT_EQ(wrong, 0);
}

/// Has four threads send `count` messages in all, and expects each once, whole and in the order of
/// its thread.
void floodOutbound(HostPipe& host, NamedPipe& writer, int count)
{
    constexpr int kThreads = 4;
    std::array<int, kThreads> next{};
    int wrong = 0;
    std::thread reader([&] {
        QByteArray message;
        for (int i = 0; i < count && host.read(message); ++i) {
            const auto thread = static_cast<std::size_t>(message.at(4) - 'A');
            if (thread >= kThreads ||
                message != frame(message.mid(4, 1) + numbered(next.at(thread)++)))
                ++wrong;
        }
    });
    std::vector<std::thread> senders;
    for (char thread = 'A'; thread < 'A' + kThreads; ++thread) {
        senders.emplace_back([&, thread] {
            for (int i = 0; i < count / kThreads; ++i)
                writer.sendData(QString::fromUtf8(thread + numbered(i)));
        });
    }
    for (std::thread& sender : senders)
        sender.join();
    reader.join();
    EXPECT_EQ(wrong, 0);
    for (const int sent : next)
        EXPECT_EQ(sent, count / kThreads);
}

} // namespace

TEST_F(NamedPipeFlood, InboundMessagesAllArriveAndLeaveNothingBehind)
{
    HostPipe host(uniquePipeName(), HostPipe::Direction::HostWrites);
    NamedPipe reader(NamedPipe::Reader);
    reader.startReaderThread(host.fullName());
    ASSERT_TRUE(host.awaitClient());
    floodInbound(host, reader, kMessages / 10);
    const std::size_t before = heapBytesInUse();
    floodInbound(host, reader, kMessages);
    expectMemoryBack(before);
}

TEST_F(NamedPipeFlood, OutboundMessagesOfFourThreadsAllArriveAndLeaveNothingBehind)
{
    HostPipe host(uniquePipeName(), HostPipe::Direction::HostReads);
    NamedPipe writer(NamedPipe::Writer);
    writer.startWriterThread(host.fullName());
    ASSERT_TRUE(host.awaitClient());
    floodOutbound(host, writer, kMessages / 10);
    const std::size_t before = heapBytesInUse();
    floodOutbound(host, writer, kMessages);
    expectMemoryBack(before);
}

TEST_F(NamedPipeFlood, NothingPilesUpInAClosedWriter)
{
    HostPipe host(uniquePipeName(), HostPipe::Direction::HostReads);
    NamedPipe writer(NamedPipe::Writer);
    writer.startWriterThread(host.fullName());
    ASSERT_TRUE(host.awaitClient());
    writer.closePipe();
    const std::size_t before = heapBytesInUse();
    for (int i = 0; i < kMessages; ++i)
        writer.sendData(QString::fromUtf8(numbered(i)));
    expectMemoryBack(before);
}
