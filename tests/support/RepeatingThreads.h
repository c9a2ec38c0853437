#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

/// Threads that do the same thing over and over until this object goes.
class RepeatingThreads
{
public:
    /// Each call gets the number of its thread.
    RepeatingThreads(int count, const std::function<void(int)>& repeat)
    {
        for (int number = 0; number < count; ++number) {
            m_threads.emplace_back([this, repeat, number] {
                while (!m_stopping) {
                    repeat(number);
                    std::this_thread::yield();
                }
            });
        }
    }

    ~RepeatingThreads()
    {
        m_stopping = true;
        for (std::thread& thread : m_threads)
            thread.join();
    }

    RepeatingThreads(const RepeatingThreads&) = delete;
    RepeatingThreads& operator=(const RepeatingThreads&) = delete;

private:
    std::atomic<bool> m_stopping{false};
    std::vector<std::thread> m_threads;
};
