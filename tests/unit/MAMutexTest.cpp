#include "tests/support/AccountsFixture.h"

#include "pavo_base/TimeCorrector.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>

using log4cplus::WARN_LOG_LEVEL;

namespace {

class MAMutexTest : public AccountsFixture
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(manager.join("own"));
        log.clear();
    }

    MAManagerProbe manager;
};

/// `enter` begins what an MAMutex over `memory` has to keep out, and returns what ends it.
template<typename Enter>
void expectKeptOut(QSharedMemory& memory, const Enter& enter)
{
    std::atomic<bool> begun{false};
    std::atomic<bool> locked{true};
    auto lock = std::make_unique<MAMutex>(&memory);
    std::thread other([&] {
        begun = true;
        [[maybe_unused]] const auto span = enter();
        EXPECT_FALSE(locked);
    });
    while (!begun)
        std::this_thread::yield();
    // Time for the other one to come in, if it could.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    locked = false;
    lock.reset();
    other.join();
}

} // namespace

TEST_F(MAMutexTest, KeepsOutLocksGatesAndPlainUsers)
{
    QSharedMemory another(view()->key());
    {
        const pavo::SegmentGate gate(another);
        ASSERT_TRUE(another.attach());
    }
    expectKeptOut(manager.memory(), [&] { return MAMutex(&another); });
    expectKeptOut(manager.memory(), [&] { return pavo::SegmentGate(another); });
    expectKeptOut(manager.memory(), [&] { return std::unique_lock<QSharedMemory>(another); });
    pavo::SegmentGate(another).detach();
}

TEST_F(MAMutexTest, LockOfNothingDoesNothing)
{
    QSharedMemory unattached(QStringLiteral("pavo-nothing"));
    {
        const MAMutex none(nullptr);
        const MAMutex other(&unattached);
    }
    EXPECT_EQ(unattached.error(), QSharedMemory::NoError);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(MAMutexTest, SlowLockIsReportedOnceItEnds)
{
    const auto start = TimeCorrector::tickCount();
    {
        const MAMutex lock(&manager.memory());
        while (TimeCorrector::tickCount() <= start + 201)
            std::this_thread::yield();
        EXPECT_TRUE(log.records().empty());
    }
    const auto end = TimeCorrector::tickCount();
    const auto records = log.records();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records.front().level, WARN_LOG_LEVEL);
    unsigned long long first = 0;
    unsigned long long last = 0;
    ASSERT_EQ(
        std::sscanf(records.front().text.c_str(), "shared memory lock %llu,%llu", &first, &last),
        2);
    EXPECT_EQ(records.front().text,
              "shared memory lock " + std::to_string(first) + "," + std::to_string(last));
    EXPECT_GE(first, start);
    EXPECT_LE(last, end);
    EXPECT_GT(last - first, 200U);
    EXPECT_NE(records.front().function.find("~MAMutex"), std::string::npos);
    EXPECT_EQ(records.front().file.rfind("MultiAccount/MAManager", 0), 0U) << records.front().file;
}

TEST_F(MAMutexTest, WaitForOthersCountsAsSlow)
{
    MAManagerProbe second;
    ASSERT_TRUE(second.join("second"));
    // On a busy machine it takes a few attempts until the other thread has waited that long.
    for (int attempt = 0; attempt < 20; ++attempt) {
        log.clear();
        auto lock = std::make_unique<MAMutex>(&manager.memory());
        std::atomic<unsigned long long> start{0};
        unsigned long long inside = 0;
        std::thread other([&] {
            start = TimeCorrector::tickCount();
            const MAMutex otherLock(&second.memory());
            inside = TimeCorrector::tickCount();
        });
        while (start == 0 || TimeCorrector::tickCount() <= start + 400)
            std::this_thread::yield();
        const auto released = TimeCorrector::tickCount();
        lock.reset();
        other.join();
        const auto complaints = log.complaints();
        ASSERT_LE(complaints.size(), 2U);
        ASSERT_GE(inside, released) << "it had to wait";
        if (complaints.size() == 2)
            return; // the holder's and the waiter's
    }
    FAIL() << "no wait of the other thread counted";
}

TEST_F(MAMutexTest, SpanOfExactlyTheLimitIsNotSlow)
{
    // On a busy machine it takes a few attempts to hit the tick.
    for (int attempt = 0; attempt < 200; ++attempt) {
        log.clear();
        auto start = TimeCorrector::tickCount();
        while (TimeCorrector::tickCount() == start)
            std::this_thread::yield();
        start = TimeCorrector::tickCount();
        auto lock = std::make_unique<MAMutex>(&manager.memory());
        const bool startIsKnown = TimeCorrector::tickCount() == start;
        while (TimeCorrector::tickCount() < start + 200)
            std::this_thread::yield();
        lock.reset();
        if (!startIsKnown || TimeCorrector::tickCount() != start + 200)
            continue;
        EXPECT_TRUE(log.records().empty()) << log.records().front().text;
        return;
    }
    FAIL() << "the tick was never hit";
}
