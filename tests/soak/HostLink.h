#pragma once

#include "platform/HostPipe.h"
#include "tests/support/Host.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <random>
#include <string>

/// The host's side of one workbench: logs it in when it has opened the pipes, then sends it all
/// kinds of messages while working, as fast as they are answered, and takes what it sends. All
/// functions return at once or within the tests' deadline.
class HostLink
{
public:
    HostLink(unsigned seed, bool isWorking);
    ~HostLink();
    HostLink(const HostLink&) = delete;
    HostLink& operator=(const HostLink&) = delete;

    /// What the workbench is given on its command line.
    [[nodiscard]] QString argument() const;

    void work();
    /// Waits until nothing is being written any more; false when a write does not end.
    bool rest();
    /// Has the next thing sent be something that the workbench closes its pipes for.
    void sendGarbage();

    /// The last number sent and the callbacks that everything sent leads to; after rest().
    [[nodiscard]] std::string sent();
    /// Waits for as many messages altogether; why not, or empty.
    [[nodiscard]] std::string await(long long count);
    /// How many messages of each name have come.
    [[nodiscard]] std::map<std::string, long long> received();

private:
    void write();
    [[nodiscard]] bool hasToWrite() const;
    bool writeNext(std::unique_lock<std::mutex>& lock);
    void read();
    void take(const QByteArray& bytes);

    std::mt19937 m_random;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_working;
    bool m_writing = true;
    bool m_closing = false;
    bool m_garbage = false;
    long long m_number = 0;
    long long m_answered = 0;
    long long m_callbacks = 0;
    long long m_count = 0;
    std::map<std::string, long long> m_received;
    std::string m_problem;

    pavo::HostPipe m_toWorkbench{uniquePipeName(QStringLiteral("to")),
                                 pavo::HostPipe::Direction::HostWrites};
    pavo::HostPipe m_fromWorkbench{uniquePipeName(QStringLiteral("from")),
                                   pavo::HostPipe::Direction::HostReads};
    PipeThread m_reader{[this] { read(); }};
    PipeThread m_writer{[this] { write(); }};
};
