#include "tools/pavo-host/PipeThread.h"

#include <QDeadlineTimer>

#include <future>
#include <utility>

namespace {

/// A cancellation between two calls is lost, so it is repeated, this often.
constexpr unsigned long kRepeatMs = 5;

} // namespace

PipeThread::PipeThread(std::function<void()> work)
    : m_thread([this, &work] {
        std::promise<void> started;
        std::future<void> start = started.get_future();
        std::unique_ptr<QThread> thread(
            QThread::create([this, work = std::move(work), started = std::move(started)]() mutable {
                m_canceller = std::make_unique<pavo::ThreadCanceller>();
                started.set_value();
                work();
            }));
        thread->start();
        start.wait();
        return thread;
    }())
{
}

PipeThread::~PipeThread()
{
    end();
}

void PipeThread::end()
{
    while (!m_thread->wait(kRepeatMs))
        m_canceller->cancel();
}

void PipeThread::endWithin(int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!m_thread->wait(kRepeatMs) && !deadline.hasExpired())
        m_canceller->cancel();
}
