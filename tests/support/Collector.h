#pragma once

#include "tests/support/Wait.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

/// Takes values from any thread and lets a test wait for them without an event loop.
template<typename Value>
class Collector
{
public:
    void add(Value value)
    {
        // Notified with the lock held: once it is free, the test may destroy this object.
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_values.push_back(std::move(value));
        m_changed.notify_all();
    }

    /// Waits until at least `count` values are there; false when they did not come.
    bool waitForCount(std::size_t count) const
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::milliseconds(kDeadlineMs),
                                  [&] { return m_values.size() >= count; });
    }

    std::vector<Value> values() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_values;
    }

    std::size_t count() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_values.size();
    }

    void clear()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_values.clear();
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<Value> m_values;
};
