#include "tools/pavo-host/PipeWriter.h"

#include <algorithm>
#include <utility>

PipeWriter::PipeWriter(const QString& name)
    : m_pipe(name, pavo::HostPipe::Direction::HostWrites)
{
}

PipeWriter::~PipeWriter()
{
    close();
}

void PipeWriter::start()
{
    m_thread.emplace([this] { run(); });
}

void PipeWriter::write(const QByteArrayList& pieces)
{
    {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(pieces);
    }
    m_changed.notify_one();
}

void PipeWriter::close()
{
    {
        const std::lock_guard lock(m_mutex);
        m_closing = true;
    }
    m_changed.notify_one();
    m_thread.reset();
    m_pipe.close();
}

std::optional<QByteArrayList> PipeWriter::next()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_closing || !m_queue.empty(); });
    if (m_closing)
        return std::nullopt;
    QByteArrayList pieces = std::move(m_queue.front());
    m_queue.pop_front();
    return pieces;
}

void PipeWriter::run()
{
    bool ok = m_pipe.awaitClient();
    if (ok)
        Q_EMIT opened();
    while (ok) {
        const auto pieces = next();
        if (!pieces)
            return;
        ok = std::all_of(pieces->begin(), pieces->end(),
                         [this](const QByteArray& piece) { return m_pipe.write(piece); });
        if (ok)
            Q_EMIT written();
    }
    Q_EMIT failed();
}
