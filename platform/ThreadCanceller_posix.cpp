#include "platform/ThreadCanceller.h"

#include "platform/posix/CancellableThread.h"

namespace pavo {

ThreadCanceller::ThreadCanceller()
    : m_thread(CancellableThread::current())
{
}

ThreadCanceller::~ThreadCanceller() = default;

void ThreadCanceller::cancel()
{
    m_thread->cancel();
}

void ThreadCanceller::waitForEnd()
{
    m_thread->end().wait();
}

} // namespace pavo
