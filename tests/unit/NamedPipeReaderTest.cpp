#include "platform/HostPipe.h"
#include "tests/support/Host.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/PipeProbe.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaMethod>
#include <QPointer>
#include <QRandomGenerator>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;
using pavo::HostPipe;

namespace {

constexpr int kMaxPayload = 4092;

class NamedPipeReader : public testing::Test
{
protected:
    void open()
    {
        ASSERT_TRUE(host.isOpen());
        reader.pipe.startReaderThread(host.fullName());
        ASSERT_TRUE(host.awaitClient());
    }

    /// Writes each chunk on its own and expects the texts, exactly and in order.
    void expectTexts(const QList<QByteArray>& chunks, const std::vector<QString>& texts)
    {
        reader.texts.clear();
        for (const QByteArray& chunk : chunks)
            ASSERT_TRUE(host.write(chunk));
        ASSERT_TRUE(reader.texts.waitForCount(texts.size()));
        EXPECT_EQ(reader.texts.values(), texts);
    }

    /// Until it waits for the first one to go.
    void startSecondClient()
    {
        reader.pipe.startReaderThread(host.fullName());
        ASSERT_TRUE(waitUntil([this] { return NamedPipeProbe::waitsUntilFree(reader.pipe); }));
    }

    LogRecorder log;
    HostPipe host{uniquePipeName(), HostPipe::Direction::HostWrites};
    PipeProbe reader{NamedPipe::Reader};
};

} // namespace

TEST_F(NamedPipeReader, LogsTheNameAndEmitsOnItsOwnThread)
{
    open();
    expectTexts({frame("hello")}, {QStringLiteral("hello")});
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "init reader " + host.fullName().toStdString()));
    EXPECT_NE(reader.emitter(), QThread::currentThread());
    EXPECT_EQ(reader.emitter(), reader.pipe.thread());
}

TEST_F(NamedPipeReader, PacketSplitAfterThreeBytesIsDeliveredOnceItIsComplete)
{
    open();
    const QByteArray packet = frame("split");
    // The marker in front comes out once the three bytes behind it have been read.
    ASSERT_TRUE(host.write(frame("marker") + packet.left(3)));
    ASSERT_TRUE(reader.texts.waitForCount(1));
    EXPECT_EQ(reader.texts.count(), 1U);
    ASSERT_TRUE(host.write(packet.mid(3)));
    ASSERT_TRUE(reader.texts.waitForCount(2));
    EXPECT_EQ(reader.texts.values().back(), QStringLiteral("split"));
}

TEST_F(NamedPipeReader, TwoPacketsInOneReadAreTwoTextsInOrder)
{
    open();
    expectTexts({frame("one") + frame("two")}, {QStringLiteral("one"), QStringLiteral("two")});
}

TEST_F(NamedPipeReader, PayloadEndsAtItsFirstZeroByte)
{
    open();
    expectTexts({frame(QByteArray("ab\0cd", 5)), frame(QByteArray("\0x", 2)), frame("next")},
                {QStringLiteral("ab"), QString(), QStringLiteral("next")});
}

TEST_F(NamedPipeReader, EmptyPacketIsAnEmptyText)
{
    open();
    expectTexts({frame(QByteArray())}, {QString()});
}

TEST_F(NamedPipeReader, TextIsDecodedAsUtf8)
{
    open();
    const QString awkward = QString::fromUtf8("\xC3\xA9\xE4\xBD\xA0\xF0\x9F\x98\x80\xE2\x80\xA8");
    expectTexts({frame(awkward.toUtf8())}, {awkward});
    EXPECT_EQ(reader.texts.values().front().size(), 5) << "a pair of surrogates is two units";
}

TEST_F(NamedPipeReader, InvalidUtf8BecomesReplacementCharacters)
{
    open();
    const QChar replacement(QChar::ReplacementCharacter);
    expectTexts({frame("a\xFFz"), frame("a\xE4\xBD"), frame("plain")},
                {QStringLiteral("a") + replacement + QStringLiteral("z"),
                 QString::fromUtf8("a\xE4\xBD"), QStringLiteral("plain")});
    EXPECT_TRUE(reader.texts.values().at(1).contains(replacement));
}

TEST_F(NamedPipeReader, EveryFrameSizeAtEverySplitPoint)
{
    open();
    const QByteArray marker = frame("m");
    for (const int size : {0, 1, 2043, 2044, 4091, kMaxPayload}) {
        const QString text = textOfUnits(size);
        const QByteArray packet = frame(text.toUtf8());
        for (int split = 0; split <= packet.size(); ++split) {
            reader.texts.clear();
            // The marker comes out with the read that took the first part (as much of it as one
            // read takes), so that the second part is read on its own.
            ASSERT_TRUE(host.write(marker + packet.left(split)));
            ASSERT_TRUE(reader.texts.waitForCount(1));
            if (split < packet.size()) {
                ASSERT_TRUE(host.write(packet.mid(split)));
            }
            ASSERT_TRUE(reader.texts.waitForCount(2)) << "size " << size << " split " << split;
            const std::vector<QString> expected{QStringLiteral("m"), text};
            ASSERT_EQ(reader.texts.values(), expected) << "size " << size << " split " << split;
        }
    }
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NamedPipeReader, FullFramesBackToBackInEveryChunkSize)
{
    open();
    const QString text = textOfUnits(kMaxPayload);
    QByteArray stream;
    for (int i = 0; i < 8; ++i)
        stream += frame(text.toUtf8());
    for (const int chunk : {1, 2, 3, 5, 1000, 2047, 2048, 2049, 4095, 4096, 4097, 32768}) {
        QList<QByteArray> chunks;
        for (int at = 0; at < stream.size(); at += chunk)
            chunks.append(stream.mid(at, chunk));
        expectTexts(chunks, std::vector<QString>(8, text));
    }
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NamedPipeReader, RandomFramesInRandomChunks)
{
    open();
    QRandomGenerator random(20240607);
    QByteArray stream;
    std::vector<QString> texts;
    for (int i = 0; i < 3000; ++i) {
        const int longest = i % 10 == 0 ? kMaxPayload : 300;
        const QString text =
            textOfUnits(random.bounded(longest + 1), QString::number(i) + QStringLiteral("-"));
        texts.push_back(text);
        stream += frame(text.toUtf8());
    }
    QList<QByteArray> chunks;
    for (int at = 0; at < stream.size();) {
        const int chunk = 1 + random.bounded(random.bounded(2) ? 20 : 6000);
        chunks.append(stream.mid(at, chunk));
        at += chunk;
    }
    expectTexts(chunks, texts);
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NamedPipeReader, LengthThatNoFrameCanHaveEndsTheReading)
{
    for (const quint32 length : {4093U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFCU, 0xFFFFFFFFU}) {
        LogRecorder ownLog;
        HostPipe ownHost(uniquePipeName(), HostPipe::Direction::HostWrites);
        PipeProbe probe(NamedPipe::Reader);
        probe.pipe.startReaderThread(ownHost.fullName());
        ASSERT_TRUE(ownHost.awaitClient());
        QByteArray header(4, '\0');
        for (int i = 0; i < 4; ++i)
            header[i] = static_cast<char>(length >> (8 * i) & 0xFFU);
        // None of the payload is there: the length alone is refused.
        ASSERT_TRUE(ownHost.write(frame("good") + header));
        ASSERT_TRUE(probe.exits.waitForCount(1));
        EXPECT_EQ(probe.texts.values(), std::vector<QString>{QStringLiteral("good")});
        probe.pipe.closePipe();
        EXPECT_EQ(probe.exits.count(), 1U);
        EXPECT_EQ(ownLog.complaints(), std::vector<std::string>{"ERROR read data error 13"})
            << length;
    }
}

TEST_F(NamedPipeReader, BadLengthThatComesByteByByteIsRefusedWithItsLastByte)
{
    open();
    for (const char byte : QByteArray("\xFE\x0F\0", 3))
        ASSERT_TRUE(host.write(QByteArray(1, byte)));
    EXPECT_EQ(reader.exits.count(), 0U);
    ASSERT_TRUE(host.write(QByteArray(1, '\0')));
    ASSERT_TRUE(reader.exits.waitForCount(1));
    EXPECT_TRUE(reader.texts.values().empty());
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR read data error 13"});
}

TEST_F(NamedPipeReader, ReadOfNoBytesEndsTheReading)
{
    open();
    ASSERT_TRUE(host.write(frame("before") + frame("cut").left(5)));
    ASSERT_TRUE(reader.texts.waitForCount(1));
    ASSERT_TRUE(host.write(QByteArray()));
    ASSERT_TRUE(reader.exits.waitForCount(1));
    reader.pipe.closePipe();
    EXPECT_EQ(reader.exits.count(), 1U);
    const auto complaints = log.complaints();
    ASSERT_EQ(complaints.size(), 1U);
    EXPECT_EQ(complaints[0].rfind("ERROR read data error ", 0), 0U) << complaints[0];
}

TEST_F(NamedPipeReader, WideTextsAtEverySplitOfTheirCharacters)
{
    open();
    const QString text = textOfUnits(kMaxPayload / 3, QString::fromUtf8("\xE4\xBD\xA0"));
    const QByteArray packet = frame(text.toUtf8());
    ASSERT_EQ(packet.size(), kMaxPayload + 4);
    for (int split = 2040; split < 2056; ++split)
        expectTexts({packet.left(split), packet.mid(split)}, {text});
}

TEST_F(NamedPipeReader, ClientsOfABusyPipeGetItOneAfterTheOther)
{
    constexpr std::size_t kClients = 6;
    std::vector<std::unique_ptr<PipeProbe>> clients;
    for (std::size_t i = 0; i < kClients; ++i) {
        clients.push_back(std::make_unique<PipeProbe>(NamedPipe::Reader));
        clients.back()->pipe.startReaderThread(host.fullName());
    }
    const auto served = [&] {
        return std::find_if(clients.begin(), clients.end(),
                            [](const auto& client) { return client->texts.count() == 1; });
    };
    // Each time the instance is free all of them try, and all but one have to wait once more.
    while (!clients.empty()) {
        ASSERT_TRUE(host.awaitClient());
        ASSERT_TRUE(host.write(frame("yours")));
        ASSERT_TRUE(waitUntil([&] { return served() != clients.end(); }));
        EXPECT_EQ((*served())->exits.count(), 0U);
        clients.erase(served());
        host.dropClient();
    }
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NamedPipeReader, ThreadIsDeletedAfterClosing)
{
    open();
    const QPointer<QThread> thread = reader.pipe.thread();
    ASSERT_TRUE(thread);
    reader.pipe.closePipe();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(thread);
}

TEST_F(NamedPipeReader, HasFiveSignalsInOrderAndNoSlots)
{
    const QMetaObject& meta = NamedPipe::staticMetaObject;
    std::vector<std::string> names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Signal);
        names.push_back(meta.method(i).methodSignature().toStdString());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"sigInitReader(QString)", "sigInitWriter(QString)",
                                               "sigSendData(QString)", "sigReadyRead(QString)",
                                               "sigExitPipe()"}));
}

TEST_F(NamedPipeReader, HostThatClosesIsOneErrorAndOneExit)
{
    open();
    ASSERT_TRUE(host.write(frame("last words") + frame("cut").left(5)));
    host.close();
    ASSERT_TRUE(reader.exits.waitForCount(1));
    reader.pipe.closePipe();
    EXPECT_EQ(reader.texts.values(), std::vector<QString>{QStringLiteral("last words")});
    EXPECT_EQ(reader.exits.count(), 1U);
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR read data error 109"});
}

TEST_F(NamedPipeReader, PipeThatIsNotThereIsReportedAtOnce)
{
    QElapsedTimer timer;
    timer.start();
    reader.pipe.startReaderThread(QStringLiteral("\\\\.\\pipe\\") + uniquePipeName());
    ASSERT_TRUE(reader.exits.waitForCount(1));
    EXPECT_LT(timer.elapsed(), 5000) << "at once, and not after the wait for a busy pipe";
    reader.pipe.closePipe();
    EXPECT_EQ(reader.exits.count(), 1U);
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR Could not open pipe. GLE=2"});
}

TEST_F(NamedPipeReader, PipeOfTheOtherDirectionIsRefused)
{
    const HostPipe other(uniquePipeName(), HostPipe::Direction::HostReads);
    reader.pipe.startReaderThread(other.fullName());
    ASSERT_TRUE(reader.exits.waitForCount(1));
    EXPECT_EQ(log.complaints(), std::vector<std::string>{"ERROR Could not open pipe. GLE=5"});
}

TEST_F(NamedPipeReader, BusyPipeIsOpenedWhenItBecomesFree)
{
    PipeProbe first(NamedPipe::Reader);
    first.pipe.startReaderThread(host.fullName());
    ASSERT_TRUE(host.awaitClient());
    startSecondClient();
    const auto started = std::chrono::steady_clock::now();
    first.pipe.closePipe();
    host.dropClient();
    ASSERT_TRUE(host.awaitClient());
    expectTexts({frame("yours now")}, {QStringLiteral("yours now")});
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    EXPECT_TRUE(first.texts.values().empty());
    EXPECT_EQ(reader.exits.count(), 0U);
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NamedPipeReader, ClosingWhileReadingIsSilent)
{
    open();
    expectTexts({frame("a")}, {QStringLiteral("a")});
    reader.pipe.closePipe();
    EXPECT_EQ(reader.exits.count(), 0U);
    EXPECT_TRUE(log.complaints().empty());
    EXPECT_TRUE(log.has(INFO_LOG_LEVEL, "NamedPipe::closePipe enter"));
    EXPECT_TRUE(log.has(INFO_LOG_LEVEL, "NamedPipe::closePipe leave"));
}

TEST_F(NamedPipeReader, ClosingWhileWaitingForABusyPipeIsSilent)
{
    PipeProbe first(NamedPipe::Reader);
    first.pipe.startReaderThread(host.fullName());
    ASSERT_TRUE(host.awaitClient());
    startSecondClient();
    reader.pipe.closePipe();
    EXPECT_EQ(reader.exits.count(), 0U);
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NamedPipeReader, ClosingAtAnyMomentOfTheStartNeverHangs)
{
    for (int i = 0; i < 100; ++i) {
        HostPipe ownHost(uniquePipeName(), HostPipe::Direction::HostWrites);
        PipeProbe probe(NamedPipe::Reader);
        probe.pipe.startReaderThread(ownHost.fullName());
        for (int spin = 0; spin < i; ++spin)
            std::this_thread::yield();
        probe.pipe.closePipe();
        EXPECT_EQ(probe.exits.count(), 0U);
    }
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NamedPipeReader, ClosingWhileTheHostFloodsNeverHangs)
{
    const HostFlood flood(uniquePipeName(), frame("flood").repeated(100));
    reader.pipe.startReaderThread(flood.fullName());
    ASSERT_TRUE(reader.texts.waitForCount(1000));
    reader.pipe.closePipe();
    EXPECT_EQ(reader.exits.count(), 0U);
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(NamedPipeReader, ClosingTwiceAndBeforeStartingIsHarmless)
{
    reader.pipe.closePipe();
    EXPECT_EQ(log.count(INFO_LOG_LEVEL, "NamedPipe::closePipe enter"), 1);
    EXPECT_EQ(log.count(INFO_LOG_LEVEL, "NamedPipe::closePipe leave"), 1);
    PipeProbe other(NamedPipe::Reader);
    other.pipe.startReaderThread(host.fullName());
    ASSERT_TRUE(host.awaitClient());
    other.pipe.closePipe();
    other.pipe.closePipe();
    EXPECT_TRUE(log.complaints().empty());
}
