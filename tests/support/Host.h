#pragma once

#include "platform/HostPipe.h"
#include "platform/ThreadCanceller.h"
#include "tests/support/Collector.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

/// A pipe name that no other test, in this process or another, uses.
QString uniquePipeName(const QString& role = QStringLiteral("pipe"));

/// `payload` behind its length, as it travels on a pipe.
QByteArray frame(const QByteArray& payload);

/// `text` repeated until it has `units` UTF-16 units.
QString textOfUnits(int units, const QString& text = QStringLiteral("abcdefghij"));

/// Runs a function that blocks in pipe calls; destruction cancels them until the function ends.
class PipeThread
{
public:
    explicit PipeThread(std::function<void()> run);
    ~PipeThread();
    PipeThread(const PipeThread&) = delete;
    PipeThread& operator=(const PipeThread&) = delete;

    bool isStopping() const { return m_stopping; }
    bool hasEnded() const { return m_ended.count() > 0; }
    bool waitForEnd() const { return m_ended.waitForCount(1); }

private:
    std::atomic<bool> m_stopping{false};
    std::unique_ptr<pavo::ThreadCanceller> m_canceller;
    Collector<bool> m_started;
    Collector<bool> m_ended;
    std::thread m_thread;
};

/// The host's end of the pipe that the workbench writes: accepts the client and collects every
/// message until the client goes.
class HostReader
{
public:
    explicit HostReader(const QString& name,
                        pavo::HostPipe::Kind kind = pavo::HostPipe::Kind::Message);

    bool isOpen() const { return m_pipe.isOpen(); }
    QString fullName() const { return m_pipe.fullName(); }
    bool waitForClient() const { return m_clients.waitForCount(1); }
    bool waitForEnd() const { return m_thread.waitForEnd(); }
    bool hasEnded() const { return m_thread.hasEnded(); }
    const Collector<QByteArray>& messages() const { return m_messages; }

private:
    void run();

    pavo::HostPipe m_pipe;
    Collector<QByteArray> m_messages;
    Collector<bool> m_clients;
    PipeThread m_thread{[this] { run(); }};
};

/// The host's end of the pipe that the workbench reads: accepts the client and writes the same
/// bytes over and over until the client goes.
class HostFlood
{
public:
    HostFlood(const QString& name, QByteArray bytes);

    bool isOpen() const { return m_pipe.isOpen(); }
    QString fullName() const { return m_pipe.fullName(); }

private:
    void run();

    pavo::HostPipe m_pipe;
    const QByteArray m_bytes;
    PipeThread m_thread{[this] { run(); }};
};
