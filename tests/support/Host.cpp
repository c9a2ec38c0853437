#include "tests/support/Host.h"

#include <QCoreApplication>

QString uniquePipeName(const QString& role)
{
    static std::atomic<int> number{0};
    return QStringLiteral("pavo-test-%1-%2-%3")
        .arg(role)
        .arg(QCoreApplication::applicationPid())
        .arg(++number);
}

QByteArray frame(const QByteArray& payload)
{
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.append(static_cast<char>(static_cast<unsigned>(payload.size()) >> shift & 0xFFU));
    return bytes + payload;
}

QString textOfUnits(int units, const QString& text)
{
    return text.repeated(units / text.size() + 1).left(units);
}

PipeThread::PipeThread(std::function<void()> run)
    : m_thread([this, run = std::move(run)] {
        m_canceller = std::make_unique<pavo::ThreadCanceller>();
        m_started.add(true);
        run();
        m_ended.add(true);
    })
{
    m_started.waitForCount(1);
}

PipeThread::~PipeThread()
{
    m_stopping = true;
    // A cancellation that comes before the call is entered is lost.
    while (!hasEnded()) {
        m_canceller->cancel();
        std::this_thread::yield();
    }
    m_thread.join();
}

HostReader::HostReader(const QString& name, pavo::HostPipe::Kind kind)
    : m_pipe(name, pavo::HostPipe::Direction::HostReads, kind)
{
}

void HostReader::run()
{
    if (!m_pipe.awaitClient())
        return;
    m_clients.add(true);
    QByteArray message;
    while (!m_thread.isStopping() && m_pipe.read(message))
        m_messages.add(message);
}

HostFlood::HostFlood(const QString& name, QByteArray bytes)
    : m_pipe(name, pavo::HostPipe::Direction::HostWrites)
    , m_bytes(std::move(bytes))
{
}

void HostFlood::run()
{
    if (!m_pipe.awaitClient())
        return;
    while (!m_thread.isStopping() && m_pipe.write(m_bytes))
        continue;
}
