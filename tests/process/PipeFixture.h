#pragma once

#include "platform/ThreadCanceller.h"
#include "platform/UniqueHandle.h"
#include "platform/Win32.h"
#include "tests/support/Collector.h"

#include <gtest/gtest.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <thread>

/// How a call ended: the error, or ERROR_SUCCESS; and what it has read all the same.
struct Outcome
{
    DWORD error;
    std::string bytes = {};
};
bool operator==(const Outcome& left, const Outcome& right);
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

const Outcome kDone{ERROR_SUCCESS};
inline Outcome done(const std::string& bytes)
{
    return {ERROR_SUCCESS, bytes};
}

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kMessageType = PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE;
constexpr DWORD kByteType = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE;
/// For a wait that is to succeed, long before this.
constexpr DWORD kLongWait = static_cast<DWORD>(kDeadlineMs);

struct Opened
{
    DWORD error;
    pavo::UniqueHandle handle;
};

/// A pipe name in the system's form, that no other test uses.
std::string freshName();

Opened createPipe(const std::string& name, DWORD pipeMode, DWORD direction = PIPE_ACCESS_DUPLEX,
                  DWORD maxInstances = 1, DWORD defaultWait = 0);
Opened openPipe(const std::string& name, DWORD access = kReadWrite);

Outcome connectClient(const pavo::UniqueHandle& host);
Outcome disconnectClient(const pavo::UniqueHandle& host);
Outcome waitForPipe(const std::string& name, DWORD milliseconds);
Outcome setReadMode(const pavo::UniqueHandle& handle, DWORD mode);
Outcome readPipe(const pavo::UniqueHandle& handle, DWORD size = 4096);
/// Reads until `size` bytes have come or a read fails.
Outcome readAll(const pavo::UniqueHandle& handle, std::size_t size);
/// Also checks that the count of written bytes is all or nothing.
Outcome writePipe(const pavo::UniqueHandle& handle, const std::string& bytes);

/// Bytes that differ from their neighbours, and from those of another `salt`.
std::string pattern(std::size_t size, unsigned salt = 0);

/// A thread in a call that may block. Whatever it does, it ends: the destructor cancels it.
class Worker
{
public:
    explicit Worker(std::function<Outcome()> call);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// How the call ended by itself; a test failure when it did not.
    Outcome outcome();
    /// How the call ended under cancellation, which is repeated, since one that comes before the
    /// thread has entered its call is lost.
    Outcome cancelled();

private:
    Collector<bool> m_started;
    Collector<Outcome> m_ended;
    std::unique_ptr<pavo::ThreadCanceller> m_canceller;
    std::thread m_thread;
};

/// Every call that a test makes on its own thread has a deadline, too.
class PipeTest : public testing::Test
{
protected:
    PipeTest();
    ~PipeTest() override;

    const std::string m_name = freshName();

private:
    pavo::ThreadCanceller m_canceller;
    Collector<bool> m_ended;
    std::thread m_watchdog;
};

/// The two ends of one connected pipe.
class ConnectedPipeTest : public PipeTest
{
protected:
    void connect(DWORD pipeMode);

    pavo::UniqueHandle m_host;
    pavo::UniqueHandle m_client;
};
