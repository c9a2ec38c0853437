#include "tools/pavo-host/PipeReader.h"

namespace {

/// For the case that the workbench has left a process behind that writes on and on.
constexpr int kDrainMs = 2000;

} // namespace

PipeReader::PipeReader(const QString& name)
    : m_pipe(name, pavo::HostPipe::Direction::HostReads)
{
}

PipeReader::~PipeReader()
{
    close();
}

void PipeReader::start()
{
    m_thread.emplace([this] { run(); });
}

void PipeReader::drain()
{
    // Only a call that would wait can be cancelled: what is in the pipe already is read.
    if (m_thread)
        m_thread->endWithin(kDrainMs);
}

void PipeReader::close()
{
    m_closing = true;
    m_thread.reset();
    m_pipe.close();
}

void PipeReader::run()
{
    if (m_pipe.awaitClient()) {
        Q_EMIT opened();
        QByteArray message;
        while (!m_closing && m_pipe.read(message))
            Q_EMIT received(message);
    }
    Q_EMIT ended();
}
