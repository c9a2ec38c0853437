// How pipes end: closed, cancelled, killed.

#include "tests/process/PipeFixture.h"
#include "tests/support/RoleProcess.h"

#include <memory>
#include <vector>

using pavo::UniqueHandle;

namespace {

/// More than any system buffers.
constexpr DWORD kTooMuch = 16U * 1024 * 1024;

class PipeEnds : public ConnectedPipeTest
{
protected:
    void SetUp() override { connect(kMessageType); }
};

using PipeCancel = PipeEnds;
using PipeDeath = PipeTest;

QStringList argumentsFor(const std::string& name)
{
    return {QString::fromStdString(name)};
}

/// A host that greets its client and then waits for it to speak until someone ends this process.
int runHost(const QStringList& arguments)
{
    const Opened host = createPipe(arguments[0].toStdString(), kMessageType);
    sayToParent(std::to_string(host.error));
    connectClient(host.handle);
    writePipe(host.handle, "welcome");
    while (readPipe(host.handle).error == ERROR_SUCCESS)
        sayToParent("heard");
    return 0;
}
const Role kHostRole("host", runHost);

/// A client that speaks once and then sends what nobody can take at once.
int runClient(const QStringList& arguments)
{
    const Opened client = openPipe(arguments[0].toStdString());
    writePipe(client.handle, "hello");
    sayToParent(std::to_string(client.error));
    writePipe(client.handle, pattern(kTooMuch));
    return 0;
}
const Role kClientRole("client", runClient);

/// Tries to become the host of a name when told to, and keeps it until it is told to end.
int runRival(const QStringList& arguments)
{
    sayToParent("ready");
    nextLineFromParent();
    const Opened host = createPipe(arguments[0].toStdString(), kMessageType,
                                   PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE);
    sayToParent(std::to_string(host.error));
    nextLineFromParent();
    return 0;
}
const Role kRivalRole("rival", runRival);

bool isBroken(const Outcome& outcome)
{
    return outcome == Outcome{ERROR_BROKEN_PIPE};
}

/// A host that disconnects says so on Windows; elsewhere the pipe is as good as closed.
bool isDisconnected(const Outcome& outcome)
{
    return outcome.error == ERROR_PIPE_NOT_CONNECTED || outcome.error == ERROR_BROKEN_PIPE ||
           outcome.error == ERROR_NO_DATA;
}

} // namespace

TEST_F(PipeEnds, hostCloses)
{
    EXPECT_EQ(writePipe(m_host, "one"), kDone);
    EXPECT_EQ(writePipe(m_host, "two"), kDone);
    m_host.reset();
    EXPECT_EQ(readAll(m_client, 6), done("onetwo"));
    EXPECT_EQ(readPipe(m_client), Outcome{ERROR_BROKEN_PIPE});
    EXPECT_EQ(readPipe(m_client), Outcome{ERROR_BROKEN_PIPE});
    EXPECT_EQ(writePipe(m_client, "x"), Outcome{ERROR_NO_DATA});
    EXPECT_EQ(writePipe(m_client, "x"), Outcome{ERROR_NO_DATA});
}

TEST_F(PipeEnds, clientCloses)
{
    EXPECT_EQ(writePipe(m_client, "one"), kDone);
    EXPECT_EQ(writePipe(m_client, "two"), kDone);
    m_client.reset();
    EXPECT_EQ(readPipe(m_host), done("one"));
    EXPECT_EQ(writePipe(m_host, "x"), Outcome{ERROR_NO_DATA});
    EXPECT_EQ(readPipe(m_host), done("two"));
    EXPECT_EQ(readPipe(m_host), Outcome{ERROR_BROKEN_PIPE});
}

TEST_F(PipeEnds, lastWordsOfOneThatHasNotListenedArrive)
{
    EXPECT_EQ(writePipe(m_client, "never read"), kDone);
    EXPECT_EQ(writePipe(m_host, "last words"), kDone);
    m_host.reset();
    EXPECT_EQ(readPipe(m_client), done("last words"));
    EXPECT_EQ(readPipe(m_client), Outcome{ERROR_BROKEN_PIPE});
}

TEST_F(PipeEnds, blockedReaderLearnsOfTheEnd)
{
    Worker reading([this] { return readPipe(m_client); });
    m_host.reset();
    EXPECT_EQ(reading.outcome(), Outcome{ERROR_BROKEN_PIPE});
}

TEST_F(PipeEnds, blockedWriterLearnsOfTheEnd)
{
    Worker writing([this] { return writePipe(m_client, pattern(kTooMuch)); });
    EXPECT_EQ(readPipe(m_host, 1).error, ERROR_MORE_DATA);
    m_host.reset();
    EXPECT_FALSE(writing.outcome() == kDone);
}

TEST_F(PipeEnds, hostDisconnects)
{
    Worker hostReading([this] { return readPipe(m_host); });
    Worker clientReading([this] { return readPipe(m_client); });
    EXPECT_EQ(disconnectClient(m_host), kDone);
    EXPECT_PRED1(isDisconnected, clientReading.outcome());
    EXPECT_FALSE(hostReading.outcome() == kDone);
    EXPECT_PRED1(isDisconnected, readPipe(m_client));
    EXPECT_PRED1(isDisconnected, writePipe(m_client, "x"));
}

TEST_F(PipeCancel, read)
{
    Worker reading([this] { return readPipe(m_client); });
    EXPECT_EQ(reading.cancelled(), Outcome{ERROR_OPERATION_ABORTED});
    EXPECT_EQ(writePipe(m_host, "still there"), kDone);
    EXPECT_EQ(readPipe(m_client), done("still there"));
}

TEST_F(PipeCancel, hostsRead)
{
    Worker reading([this] { return readPipe(m_host); });
    EXPECT_EQ(reading.cancelled(), Outcome{ERROR_OPERATION_ABORTED});
}

TEST_F(PipeCancel, wait)
{
    Worker waiting([this] { return waitForPipe(m_name, NMPWAIT_WAIT_FOREVER); });
    EXPECT_EQ(waiting.cancelled(), Outcome{ERROR_OPERATION_ABORTED});
}

TEST_F(PipeCancel, accept)
{
    const std::string name = freshName();
    const Opened host = createPipe(name, kMessageType);
    Worker accepting([&] { return connectClient(host.handle); });
    EXPECT_EQ(accepting.cancelled(), Outcome{ERROR_OPERATION_ABORTED});
    EXPECT_EQ(openPipe(name).error, ERROR_SUCCESS);
}

TEST_F(PipeCancel, writeLeavesNoTornMessage)
{
    EXPECT_EQ(writePipe(m_client, "whole"), kDone);
    Worker writing([this] { return writePipe(m_client, pattern(kTooMuch)); });
    EXPECT_EQ(writing.cancelled(), Outcome{ERROR_OPERATION_ABORTED});
    // Windows takes back what it has of the message; elsewhere the pipe is broken off.
    const Outcome next = writePipe(m_client, "next");
    EXPECT_TRUE(next == kDone || next == Outcome{ERROR_NO_DATA}) << next;
    m_client.reset();
    EXPECT_EQ(readPipe(m_host, kTooMuch), done("whole"));
    if (next == kDone) {
        EXPECT_EQ(readPipe(m_host, kTooMuch), done("next"));
    }
    EXPECT_EQ(readPipe(m_host, kTooMuch), Outcome{ERROR_BROKEN_PIPE});
}

TEST_F(PipeCancel, writeThatHasNotBegunLeavesThePipeAsItWas)
{
    const std::string message = pattern(1000);
    int written = 0;
    Worker writing([&] {
        for (;;) {
            Outcome outcome = writePipe(m_client, message);
            if (outcome.error != ERROR_SUCCESS)
                return outcome;
            ++written;
        }
    });
    EXPECT_EQ(writing.cancelled(), Outcome{ERROR_OPERATION_ABORTED});
    Worker afterwards([this] { return writePipe(m_client, "after"); });
    for (int i = 0; i < written; ++i)
        ASSERT_EQ(readPipe(m_host), done(message));
    EXPECT_EQ(readPipe(m_host), done("after"));
    EXPECT_EQ(afterwards.outcome(), kDone);
}

TEST_F(PipeCancel, endsOneCallAndNotTheNext)
{
    std::unique_ptr<pavo::ThreadCanceller> canceller;
    Collector<bool> begun;
    Collector<bool> goesOn;
    Collector<Outcome> outcomes;
    std::thread calling([&] {
        canceller = std::make_unique<pavo::ThreadCanceller>();
        begun.add(true);
        outcomes.add(readPipe(m_client));
        goesOn.waitForCount(1);
        outcomes.add(waitForPipe(m_name, 1));
    });
    EXPECT_TRUE(begun.waitForCount(1));
    while (outcomes.count() == 0) {
        canceller->cancel();
        std::this_thread::yield();
    }
    goesOn.add(true);
    calling.join();
    EXPECT_EQ(outcomes.values().front(), Outcome{ERROR_OPERATION_ABORTED});
    EXPECT_EQ(outcomes.values().back(), Outcome{ERROR_SEM_TIMEOUT});
}

TEST_F(PipeCancel, isLostOnAThreadThatDoesNotBlock)
{
    pavo::ThreadCanceller self;
    self.cancel();
    EXPECT_EQ(writePipe(m_host, "x"), kDone);
    EXPECT_EQ(readPipe(m_client), done("x"));
    // Nor is it kept for the next call that blocks.
    self.cancel();
    EXPECT_EQ(waitForPipe(m_name, 1), Outcome{ERROR_SEM_TIMEOUT});
}

TEST_F(PipeCancel, isLostOnAThreadThatHasEnded)
{
    std::unique_ptr<pavo::ThreadCanceller> canceller;
    std::thread([&] { canceller = std::make_unique<pavo::ThreadCanceller>(); }).join();
    canceller->cancel();
    EXPECT_EQ(waitForPipe(m_name, 1), Outcome{ERROR_SEM_TIMEOUT});
}

TEST_F(PipeDeath, hostIsKilled)
{
    RoleProcess host("host", argumentsFor(m_name));
    ASSERT_EQ(host.nextLine(), "0");
    const Opened client = openPipe(m_name);
    ASSERT_EQ(client.error, ERROR_SUCCESS);
    EXPECT_EQ(writePipe(client.handle, "hello"), kDone);
    ASSERT_EQ(host.nextLine(), "heard");
    EXPECT_EQ(openPipe(m_name).error, ERROR_PIPE_BUSY);
    Worker waiting([this] { return waitForPipe(m_name, 500); });
    host.kill();

    EXPECT_EQ(readPipe(client.handle), done("welcome"));
    EXPECT_EQ(readPipe(client.handle), Outcome{ERROR_BROKEN_PIPE});
    EXPECT_EQ(writePipe(client.handle, "x"), Outcome{ERROR_NO_DATA});
    EXPECT_FALSE(waiting.outcome() == kDone);
    EXPECT_EQ(openPipe(m_name).error, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(waitForPipe(m_name, kLongWait), Outcome{ERROR_FILE_NOT_FOUND});

    const Opened successor = createPipe(m_name, kMessageType);
    EXPECT_EQ(successor.error, ERROR_SUCCESS);
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
}

TEST_F(PipeDeath, clientIsKilledWhileItWrites)
{
    const Opened host = createPipe(m_name, kMessageType);
    RoleProcess client("client", argumentsFor(m_name));
    ASSERT_EQ(client.nextLine(), "0");
    EXPECT_EQ(readPipe(host.handle), done("hello"));
    client.kill();

    // Where the system had taken all of it, the message is there; it is not torn.
    const Outcome read = readPipe(host.handle, kTooMuch);
    EXPECT_TRUE(isBroken(read) || (read.error == ERROR_SUCCESS && read.bytes == pattern(kTooMuch)))
        << read;
    EXPECT_EQ(readPipe(host.handle), Outcome{ERROR_BROKEN_PIPE});
    EXPECT_EQ(openPipe(m_name).error, ERROR_PIPE_BUSY);

    EXPECT_EQ(disconnectClient(host.handle), kDone);
    Worker accepting([&] { return connectClient(host.handle); });
    EXPECT_EQ(waitForPipe(m_name, kLongWait), kDone);
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
    EXPECT_EQ(accepting.outcome(), kDone);
}

TEST_F(PipeDeath, oneOfManyRivalsInheritsADeadHostsName)
{
    {
        RoleProcess dead("host", argumentsFor(m_name));
        ASSERT_EQ(dead.nextLine(), "0");
    }
    constexpr int kRivals = 6;
    std::vector<std::unique_ptr<RoleProcess>> rivals;
    rivals.reserve(kRivals);
    for (int i = 0; i < kRivals; ++i)
        rivals.push_back(std::make_unique<RoleProcess>("rival", argumentsFor(m_name)));
    for (const auto& rival : rivals)
        ASSERT_EQ(rival->nextLine(), "ready");
    for (const auto& rival : rivals)
        rival->say("go");
    int winners = 0;
    for (const auto& rival : rivals)
        winners += rival->nextLine() == "0" ? 1 : 0;
    EXPECT_EQ(winners, 1);
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
    for (const auto& rival : rivals) {
        rival->say("end");
        EXPECT_EQ(rival->waitForExit(), 0);
    }
    EXPECT_EQ(openPipe(m_name).error, ERROR_FILE_NOT_FOUND);
}
