#include "platform/ThreadCanceller.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <thread>

namespace {

/// Whether the main thread sleeps in a call of the system.
bool isMainThreadAsleep()
{
    std::ifstream file("/proc/self/task/" + std::to_string(::getpid()) + "/stat");
    std::string text;
    std::getline(file, text);
    return text.find(") S ") != std::string::npos;
}

} // namespace

TEST(PosixThreadEnd, comesAfterTheCleanUpOfWhatLibrariesKeepForTheThread)
{
    static std::atomic<bool> awaited;
    static std::atomic<bool> cleaned;
    static pthread_key_t key;
    ASSERT_EQ(pthread_key_create(&key,
                                 [](void*) {
                                     // Whoever does not wait comes through before this.
                                     while (!awaited || !isMainThreadAsleep())
                                         std::this_thread::yield();
                                     cleaned = true;
                                 }),
              0);
    // Kept before as well as after the thread's canceller: the order decides about the clean-up.
    for (const bool before : {true, false}) {
        awaited = false;
        cleaned = false;
        std::promise<std::unique_ptr<pavo::ThreadCanceller>> made;
        auto canceller = made.get_future();
        std::thread([&made, before] {
            if (before)
                pthread_setspecific(key, &key);
            auto own = std::make_unique<pavo::ThreadCanceller>();
            if (!before)
                pthread_setspecific(key, &key);
            made.set_value(std::move(own));
        }).detach();
        const auto ended = canceller.get();
        awaited = true;
        ended->waitForEnd();
        EXPECT_TRUE(cleaned) << before;
        ended->waitForEnd();
    }
    pthread_key_delete(key);
}
