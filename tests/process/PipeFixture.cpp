#include "tests/process/PipeFixture.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <ostream>
#include <utility>

using pavo::UniqueHandle;

namespace {

Outcome outcomeOf(BOOL succeeded)
{
    return {succeeded ? ERROR_SUCCESS : GetLastError()};
}

Opened openedAs(HANDLE handle)
{
    if (handle == INVALID_HANDLE_VALUE)
        return {GetLastError(), nullptr};
    return {ERROR_SUCCESS, UniqueHandle(handle)};
}

} // namespace

bool operator==(const Outcome& left, const Outcome& right)
{
    return left.error == right.error && left.bytes == right.bytes;
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    constexpr std::size_t kShown = 60;
    return stream << "error " << outcome.error << ", " << outcome.bytes.size() << " bytes '"
                  << outcome.bytes.substr(0, kShown) << '\'';
}

std::string freshName()
{
    static std::atomic<int> count{0};
    return R"(\\.\pipe\pavo-platform-)" + std::to_string(QCoreApplication::applicationPid()) + '-' +
           std::to_string(++count);
}

Opened createPipe(const std::string& name, DWORD pipeMode, DWORD direction, DWORD maxInstances,
                  DWORD defaultWait)
{
    constexpr DWORD kBufferSize = 4096;
    return openedAs(CreateNamedPipeA(name.c_str(), direction, pipeMode, maxInstances, kBufferSize,
                                     kBufferSize, defaultWait, nullptr));
}

Opened openPipe(const std::string& name, DWORD access)
{
    return openedAs(CreateFileA(name.c_str(), access, 0, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

Outcome connectClient(const UniqueHandle& host)
{
    return outcomeOf(ConnectNamedPipe(host.get(), nullptr));
}

Outcome disconnectClient(const UniqueHandle& host)
{
    return outcomeOf(DisconnectNamedPipe(host.get()));
}

Outcome waitForPipe(const std::string& name, DWORD milliseconds)
{
    return outcomeOf(WaitNamedPipeA(name.c_str(), milliseconds));
}

Outcome setReadMode(const UniqueHandle& handle, DWORD mode)
{
    return outcomeOf(SetNamedPipeHandleState(handle.get(), &mode, nullptr, nullptr));
}

Outcome readPipe(const UniqueHandle& handle, DWORD size)
{
    std::string bytes(size, '\0');
    DWORD count = 0;
    Outcome outcome = outcomeOf(ReadFile(handle.get(), bytes.data(), size, &count, nullptr));
    bytes.resize(count);
    outcome.bytes = std::move(bytes);
    return outcome;
}

Outcome readAll(const UniqueHandle& handle, std::size_t size)
{
    Outcome all = kDone;
    while (all.error == ERROR_SUCCESS && all.bytes.size() < size) {
        const Outcome part = readPipe(handle);
        all.error = part.error;
        all.bytes += part.bytes;
    }
    return all;
}

Outcome writePipe(const UniqueHandle& handle, const std::string& bytes)
{
    const auto size = static_cast<DWORD>(bytes.size());
    DWORD count = 0;
    Outcome outcome = outcomeOf(WriteFile(handle.get(), bytes.data(), size, &count, nullptr));
    EXPECT_EQ(count, outcome.error == ERROR_SUCCESS ? size : 0);
    return outcome;
}

std::string pattern(std::size_t size, unsigned salt)
{
    std::string bytes(size, '\0');
    unsigned value = salt;
    for (char& byte : bytes) {
        value = value * 1103515245U + 12345U;
        byte = static_cast<char>(value >> 16U & 0xffU);
    }
    return bytes;
}

Worker::Worker(std::function<Outcome()> call)
    : m_thread([this, call = std::move(call)] {
        m_canceller = std::make_unique<pavo::ThreadCanceller>();
        m_started.add(true);
        m_ended.add(call());
    })
{
    m_started.waitForCount(1);
}

Worker::~Worker()
{
    cancelled();
    m_thread.join();
}

Outcome Worker::outcome()
{
    EXPECT_TRUE(m_ended.waitForCount(1)) << "still blocked";
    return cancelled();
}

Outcome Worker::cancelled()
{
    while (m_ended.count() == 0) {
        m_canceller->cancel();
        std::this_thread::yield();
    }
    return m_ended.values().front();
}

PipeTest::PipeTest()
    : m_watchdog([this] {
        if (m_ended.waitForCount(1))
            return;
        ADD_FAILURE() << "a call on the test's own thread is blocked";
        while (m_ended.count() == 0) {
            m_canceller.cancel();
            std::this_thread::yield();
        }
    })
{
}

PipeTest::~PipeTest()
{
    m_ended.add(true);
    m_watchdog.join();
}

void ConnectedPipeTest::connect(DWORD pipeMode)
{
    m_host = createPipe(m_name, pipeMode).handle;
    m_client = openPipe(m_name).handle;
    ASSERT_TRUE(m_host && m_client);
}
