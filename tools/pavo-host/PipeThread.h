#pragma once

#include "platform/ThreadCanceller.h"

#include <QThread>

#include <functional>
#include <memory>

/// A thread that may block in pipe calls.
class PipeThread
{
public:
    explicit PipeThread(std::function<void()> work);
    /// As end().
    ~PipeThread();
    PipeThread(const PipeThread&) = delete;
    PipeThread& operator=(const PipeThread&) = delete;

    /// Makes every pipe call fail that the thread would block in, until its work is over.
    void end();
    /// As end(), but no longer than this.
    void endWithin(int milliseconds);

private:
    std::unique_ptr<pavo::ThreadCanceller> m_canceller;
    const std::unique_ptr<QThread> m_thread;
};
