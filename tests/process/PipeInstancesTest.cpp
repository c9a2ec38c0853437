// Names, instances, access and waiting.

#include "tests/process/PipeFixture.h"

#include <QElapsedTimer>

#include <iterator>
#include <memory>
#include <vector>

using pavo::UniqueHandle;

namespace {

using PipeNames = PipeTest;
using PipeInstances = PipeTest;
using PipeAccess = PipeTest;
using PipeWait = PipeTest;

std::string upperCase(std::string text)
{
    for (char& c : text)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return text;
}

/// Frees the instance of a client that has gone, and waits for the next one.
Outcome acceptNext(const UniqueHandle& host)
{
    const Outcome outcome = disconnectClient(host);
    return outcome == kDone ? connectClient(host) : outcome;
}

} // namespace

TEST_F(PipeNames, nameWithoutHostIsNotThere)
{
    EXPECT_EQ(openPipe(m_name).error, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(waitForPipe(m_name, kLongWait), Outcome{ERROR_FILE_NOT_FOUND});
}

TEST_F(PipeNames, noNameIsNoPath)
{
    EXPECT_EQ(openPipe("").error, ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(CreateFileA(nullptr, kReadWrite, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_NE(createPipe(R"(\\.\pipe\)", kMessageType).error, ERROR_SUCCESS);
}

TEST_F(PipeNames, caseDoesNotMatter)
{
    const Opened host = createPipe(m_name, kMessageType);
    ASSERT_EQ(host.error, ERROR_SUCCESS);
    EXPECT_EQ(openPipe(upperCase(m_name)).error, ERROR_SUCCESS);
}

TEST_F(PipeNames, anyCharacterAndLongNamesAreKeptApart)
{
    const std::string longName = m_name + std::string(200, 'n');
    const std::string names[] = {m_name,       m_name + "/slash", m_name + "%2fslash",
                                 m_name + "~", m_name + " blank", m_name + "\xe4\xb8\xad",
                                 longName,     longName + "x",    m_name + ".dot"};
    std::vector<UniqueHandle> hosts;
    std::vector<UniqueHandle> clients;
    hosts.reserve(std::size(names));
    clients.reserve(std::size(names));
    for (const std::string& name : names) {
        Opened host = createPipe(name, kMessageType);
        ASSERT_EQ(host.error, ERROR_SUCCESS) << name;
        hosts.push_back(std::move(host.handle));
    }
    for (const std::string& name : names) {
        Opened client = openPipe(name);
        ASSERT_EQ(client.error, ERROR_SUCCESS) << name;
        clients.push_back(std::move(client.handle));
    }
    for (std::size_t i = 0; i < hosts.size(); ++i)
        EXPECT_EQ(writePipe(clients[i], std::to_string(i)), kDone);
    for (std::size_t i = 0; i < hosts.size(); ++i)
        EXPECT_EQ(readPipe(hosts[i]), done(std::to_string(i)));
}

TEST_F(PipeNames, closedNameIsNotThereAndCanBeMadeAgain)
{
    for (int i = 0; i < 3; ++i) {
        const Opened host = createPipe(m_name, kMessageType);
        ASSERT_EQ(host.error, ERROR_SUCCESS);
        EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
    }
    EXPECT_EQ(openPipe(m_name).error, ERROR_FILE_NOT_FOUND);
}

TEST_F(PipeNames, firstInstanceIsRefusedWhileAnotherLives)
{
    const DWORD first = PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE;
    const Opened host = createPipe(m_name, kMessageType, first);
    ASSERT_EQ(host.error, ERROR_SUCCESS);
    // Wine does not know the flag and says that the one instance is taken.
    const DWORD error = createPipe(m_name, kMessageType, first).error;
    EXPECT_TRUE(error == ERROR_ACCESS_DENIED || error == ERROR_PIPE_BUSY) << error;
}

TEST_F(PipeNames, unsoundHostsAreRefused)
{
    EXPECT_EQ(createPipe(m_name, kMessageType, 0).error, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(createPipe(m_name, PIPE_TYPE_BYTE | PIPE_READMODE_MESSAGE).error,
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(openPipe(m_name).error, ERROR_FILE_NOT_FOUND);
}

TEST_F(PipeInstances, oneClientBeforeTheHostHasAccepted)
{
    const Opened host = createPipe(m_name, kMessageType);
    const Opened client = openPipe(m_name);
    EXPECT_EQ(client.error, ERROR_SUCCESS);
    EXPECT_EQ(openPipe(m_name).error, ERROR_PIPE_BUSY);
    EXPECT_EQ(connectClient(host.handle), Outcome{ERROR_PIPE_CONNECTED});
    EXPECT_EQ(openPipe(m_name).error, ERROR_PIPE_BUSY);
}

TEST_F(PipeInstances, whatAnEarlyClientWroteIsThere)
{
    const Opened host = createPipe(m_name, kMessageType);
    const Opened client = openPipe(m_name);
    EXPECT_EQ(writePipe(client.handle, "early"), kDone);
    EXPECT_EQ(connectClient(host.handle), Outcome{ERROR_PIPE_CONNECTED});
    EXPECT_EQ(readPipe(host.handle), done("early"));
}

TEST_F(PipeInstances, hostWaitsForItsClient)
{
    const Opened host = createPipe(m_name, kMessageType);
    Worker accepting([&] { return connectClient(host.handle); });
    const Opened client = openPipe(m_name);
    EXPECT_EQ(client.error, ERROR_SUCCESS);
    const Outcome accepted = accepting.outcome();
    // Depending on who came first.
    EXPECT_TRUE(accepted == kDone || accepted == Outcome{ERROR_PIPE_CONNECTED}) << accepted;
}

TEST_F(PipeInstances, instanceOfAGoneClientStaysBusyUntilTheHostFreesIt)
{
    const Opened host = createPipe(m_name, kMessageType);
    openPipe(m_name).handle.reset();
    EXPECT_EQ(openPipe(m_name).error, ERROR_PIPE_BUSY);
    EXPECT_EQ(connectClient(host.handle), Outcome{ERROR_NO_DATA});
    EXPECT_EQ(disconnectClient(host.handle), kDone);
    EXPECT_EQ(openPipe(m_name).error, ERROR_PIPE_BUSY);

    Worker accepting([&] { return connectClient(host.handle); });
    EXPECT_EQ(waitForPipe(m_name, kLongWait), kDone);
    const Opened client = openPipe(m_name);
    EXPECT_EQ(client.error, ERROR_SUCCESS);
    EXPECT_EQ(accepting.outcome(), kDone);
    EXPECT_EQ(writePipe(client.handle, "second"), kDone);
    EXPECT_EQ(readPipe(host.handle), done("second"));
}

TEST_F(PipeInstances, eachInstanceHasItsOwnClient)
{
    const Opened first = createPipe(m_name, kMessageType, PIPE_ACCESS_DUPLEX, 2);
    const Opened second = createPipe(m_name, kMessageType, PIPE_ACCESS_DUPLEX, 2);
    ASSERT_EQ(second.error, ERROR_SUCCESS);
    EXPECT_EQ(createPipe(m_name, kMessageType, PIPE_ACCESS_DUPLEX, 2).error, ERROR_PIPE_BUSY);

    const Opened one = openPipe(m_name);
    const Opened two = openPipe(m_name);
    EXPECT_EQ(openPipe(m_name).error, ERROR_PIPE_BUSY);
    EXPECT_EQ(writePipe(first.handle, "first"), kDone);
    EXPECT_EQ(writePipe(second.handle, "second"), kDone);
    const std::string read = readPipe(one.handle).bytes + readPipe(two.handle).bytes;
    EXPECT_TRUE(read == "firstsecond" || read == "secondfirst") << read;
}

TEST_F(PipeInstances, allHaveOneDirection)
{
    const Opened host = createPipe(m_name, kMessageType, PIPE_ACCESS_DUPLEX, 2);
    EXPECT_EQ(createPipe(m_name, kMessageType, PIPE_ACCESS_INBOUND, 2).error, ERROR_ACCESS_DENIED);
}

TEST_F(PipeInstances, hostWithoutClientHasNothingToReadOrWrite)
{
    const Opened host = createPipe(m_name, kMessageType);
    EXPECT_EQ(readPipe(host.handle), Outcome{ERROR_PIPE_LISTENING});
    EXPECT_EQ(writePipe(host.handle, "x"), Outcome{ERROR_PIPE_LISTENING});
    openPipe(m_name).handle.reset();
    EXPECT_EQ(disconnectClient(host.handle), kDone);
    EXPECT_EQ(readPipe(host.handle), Outcome{ERROR_PIPE_NOT_CONNECTED});
    EXPECT_EQ(writePipe(host.handle, "x"), Outcome{ERROR_PIPE_NOT_CONNECTED});
    EXPECT_EQ(disconnectClient(host.handle), Outcome{ERROR_PIPE_NOT_CONNECTED});
}

TEST_F(PipeAccess, clientMayDoWhatThePipeIsFor)
{
    const Opened outbound = createPipe(m_name, kMessageType, PIPE_ACCESS_OUTBOUND);
    EXPECT_EQ(openPipe(m_name, GENERIC_WRITE).error, ERROR_ACCESS_DENIED);
    EXPECT_EQ(openPipe(m_name, kReadWrite).error, ERROR_ACCESS_DENIED);
    const Opened reader = openPipe(m_name, GENERIC_READ);
    ASSERT_EQ(reader.error, ERROR_SUCCESS);
    EXPECT_EQ(writePipe(reader.handle, "x"), Outcome{ERROR_ACCESS_DENIED});
    EXPECT_EQ(readPipe(outbound.handle), Outcome{ERROR_ACCESS_DENIED});
    EXPECT_EQ(writePipe(outbound.handle, "down"), kDone);
    EXPECT_EQ(readPipe(reader.handle), done("down"));

    const std::string name = freshName();
    const Opened inbound = createPipe(name, kMessageType, PIPE_ACCESS_INBOUND);
    EXPECT_EQ(openPipe(name, GENERIC_READ).error, ERROR_ACCESS_DENIED);
    const Opened writer = openPipe(name, GENERIC_WRITE);
    ASSERT_EQ(writer.error, ERROR_SUCCESS);
    EXPECT_EQ(readPipe(writer.handle), Outcome{ERROR_ACCESS_DENIED});
    EXPECT_EQ(writePipe(inbound.handle, "x"), Outcome{ERROR_ACCESS_DENIED});
    EXPECT_EQ(writePipe(writer.handle, "up"), kDone);
    EXPECT_EQ(readPipe(inbound.handle), done("up"));
}

TEST_F(PipeAccess, readModeIsForWhoMayWriteOrHasAskedForIt)
{
    const Opened inbound = createPipe(m_name, kMessageType, PIPE_ACCESS_INBOUND);
    EXPECT_EQ(setReadMode(inbound.handle, PIPE_READMODE_BYTE), Outcome{ERROR_ACCESS_DENIED});
    const Opened writer = openPipe(m_name, GENERIC_WRITE);
    EXPECT_EQ(setReadMode(writer.handle, PIPE_READMODE_MESSAGE), kDone);

    // Wine lets every client do it, with or without the right.
    const std::string name = freshName();
    const Opened outbound = createPipe(name, kMessageType, PIPE_ACCESS_OUTBOUND);
    const Opened reader = openPipe(name, GENERIC_READ | FILE_WRITE_ATTRIBUTES);
    EXPECT_EQ(setReadMode(reader.handle, PIPE_READMODE_MESSAGE), kDone);
}

TEST_F(PipeAccess, unknownHandlesAreRefused)
{
    const UniqueHandle none;
    EXPECT_EQ(readPipe(none), Outcome{ERROR_INVALID_HANDLE});
    EXPECT_EQ(writePipe(none, "x"), Outcome{ERROR_INVALID_HANDLE});
    EXPECT_EQ(setReadMode(none, PIPE_READMODE_BYTE), Outcome{ERROR_INVALID_HANDLE});
    EXPECT_EQ(connectClient(none), Outcome{ERROR_INVALID_HANDLE});
    EXPECT_EQ(disconnectClient(none), Outcome{ERROR_INVALID_HANDLE});

    HANDLE closed = createPipe(m_name, kMessageType).handle.release();
    EXPECT_TRUE(CloseHandle(closed));
    EXPECT_FALSE(CloseHandle(closed));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(PipeWait, freeInstanceIsReportedAtOnce)
{
    const Opened host = createPipe(m_name, kMessageType);
    EXPECT_EQ(waitForPipe(m_name, kLongWait), kDone);
    EXPECT_EQ(waitForPipe(m_name, NMPWAIT_USE_DEFAULT_WAIT), kDone);
    // Waiting takes nothing.
    EXPECT_EQ(openPipe(m_name).error, ERROR_SUCCESS);
}

TEST_F(PipeWait, busyPipeIsWaitedForInVain)
{
    const Opened host = createPipe(m_name, kMessageType);
    const Opened client = openPipe(m_name);
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(waitForPipe(m_name, 300), Outcome{ERROR_SEM_TIMEOUT});
    // Systems round.
    EXPECT_GE(timer.elapsed(), 290);
    EXPECT_LT(timer.elapsed(), kDeadlineMs);
}

TEST_F(PipeWait, hostNamesTheDefaultTime)
{
    const Opened host = createPipe(m_name, kMessageType, PIPE_ACCESS_DUPLEX, 1, 300);
    const Opened client = openPipe(m_name);
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(waitForPipe(m_name, NMPWAIT_USE_DEFAULT_WAIT), Outcome{ERROR_SEM_TIMEOUT});
    EXPECT_GE(timer.elapsed(), 290);
    EXPECT_LT(timer.elapsed(), kDeadlineMs);
}

TEST_F(PipeWait, endsWhenTheHostFreesItsInstance)
{
    const Opened host = createPipe(m_name, kMessageType);
    UniqueHandle client = openPipe(m_name).handle;
    Worker finite([&] { return waitForPipe(m_name, kLongWait); });
    Worker infinite([&] { return waitForPipe(m_name, NMPWAIT_WAIT_FOREVER); });
    client.reset();
    Worker accepting([&] { return acceptNext(host.handle); });
    EXPECT_EQ(finite.outcome(), kDone);
    EXPECT_EQ(infinite.outcome(), kDone);
    client = openPipe(m_name).handle;
    EXPECT_EQ(accepting.outcome(), kDone);
}

TEST_F(PipeWait, endsWhenTheHostAddsAnInstance)
{
    const Opened first = createPipe(m_name, kMessageType, PIPE_ACCESS_DUPLEX, 2);
    const Opened client = openPipe(m_name);
    Worker waiting([&] { return waitForPipe(m_name, kLongWait); });
    const Opened second = createPipe(m_name, kMessageType, PIPE_ACCESS_DUPLEX, 2);
    EXPECT_EQ(waiting.outcome(), kDone);
}

TEST_F(PipeWait, failsWhenTheHostEnds)
{
    UniqueHandle host = createPipe(m_name, kMessageType).handle;
    const Opened client = openPipe(m_name);
    Worker waiting([&] { return waitForPipe(m_name, 500); });
    host.reset();
    // Windows keeps the wait to its time-out, in case the name comes back.
    const Outcome outcome = waiting.outcome();
    EXPECT_TRUE(outcome == Outcome{ERROR_SEM_TIMEOUT} || outcome == Outcome{ERROR_FILE_NOT_FOUND})
        << outcome;
}

TEST_F(PipeWait, everyClientOfACrowdIsServed)
{
    constexpr int kClients = 20;
    const Opened host = createPipe(m_name, kMessageType);
    std::vector<std::unique_ptr<Worker>> clients;
    clients.reserve(kClients);
    for (int i = 0; i < kClients; ++i)
        clients.push_back(std::make_unique<Worker>([this, i] {
            for (;;) {
                const Opened client = openPipe(m_name, kReadWrite);
                if (client.error == ERROR_SUCCESS) {
                    const Outcome written = writePipe(client.handle, std::to_string(i));
                    // Until the host has read.
                    return written == kDone ? readPipe(client.handle) : written;
                }
                if (client.error != ERROR_PIPE_BUSY)
                    return Outcome{client.error};
                Outcome waited = waitForPipe(m_name, kLongWait);
                if (!(waited == kDone))
                    return waited;
            }
        }));
    std::vector<bool> served(kClients);
    for (int i = 0; i < kClients; ++i) {
        connectClient(host.handle);
        const Outcome read = readPipe(host.handle);
        ASSERT_EQ(read.error, ERROR_SUCCESS);
        served[std::stoul(read.bytes)] = true;
        EXPECT_EQ(writePipe(host.handle, "served"), kDone);
        // The client hangs up once it has read its answer.
        EXPECT_EQ(readPipe(host.handle), Outcome{ERROR_BROKEN_PIPE});
        EXPECT_EQ(disconnectClient(host.handle), kDone);
    }
    EXPECT_EQ(served, std::vector<bool>(kClients, true));
    for (const auto& client : clients)
        EXPECT_EQ(client->outcome(), done("served"));
}
