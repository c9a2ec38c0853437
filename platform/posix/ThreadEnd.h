#pragma once

#include <future>

namespace pavo {

/// Learns when the thread that made it has ended altogether, with all that libraries keep for it
/// and clean up at its end. Qt's wait for a thread is over before that, and a process that then
/// leaves takes away what the clean-up still uses.
class ThreadEnd
{
public:
    ThreadEnd();

    /// On another thread, once that thread is on its way to its end. Any number of times.
    void wait() const { m_ended.wait(); }

private:
    std::shared_future<void> m_ended;
};

} // namespace pavo
