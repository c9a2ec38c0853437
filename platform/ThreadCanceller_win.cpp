#include "platform/ThreadCanceller.h"

#include "platform/Win32.h"

namespace pavo {

class CancellableThread
{
public:
    CancellableThread()
    {
        const HANDLE process = GetCurrentProcess();
        // The one right that CancelSynchronousIo asks for.
        if (!DuplicateHandle(process, GetCurrentThread(), process, &m_handle, THREAD_TERMINATE,
                             FALSE, 0))
            m_handle = nullptr;
    }
    ~CancellableThread()
    {
        if (m_handle)
            CloseHandle(m_handle);
    }
    CancellableThread(const CancellableThread&) = delete;
    CancellableThread& operator=(const CancellableThread&) = delete;

    void cancel() { CancelSynchronousIo(m_handle); }

private:
    HANDLE m_handle = nullptr;
};

ThreadCanceller::ThreadCanceller()
    : m_thread(std::make_shared<CancellableThread>())
{
}

ThreadCanceller::~ThreadCanceller() = default;

void ThreadCanceller::cancel()
{
    m_thread->cancel();
}

// Here Qt waits for the thread itself, whose data are gone by then.
void ThreadCanceller::waitForEnd() {}

} // namespace pavo
