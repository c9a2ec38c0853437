#include "tests/soak/GrowthJudge.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr int kSeconds = 1000;

/// A run of one process whose resident memory is `residentAt` each second.
GrowthJudge runOf(const std::function<long long(int)>& residentAt)
{
    GrowthJudge judge;
    for (int second = 0; second < kSeconds; ++second)
        judge.add("process", second, {residentAt(second), 1, 1, 1, GrowthJudge::kNone, 1});
    return judge;
}

const long long kLimit = GrowthJudge::kQuantities[0].limit;

} // namespace

TEST(GrowthJudgeTest, WarmingUpAndBurstsAreNoGrowth)
{
    const auto judge = runOf([](int second) {
        const bool isBurst = second % 10 == 0;
        return second < 100 ? 0 : 100000 + (isBurst ? 5 * kLimit : second % 7);
    });
    EXPECT_TRUE(judge.isFlat(kSeconds));
    EXPECT_EQ(judge.report(kSeconds).find("GROWS"), std::string::npos);
}

TEST(GrowthJudgeTest, SteadyGrowthIsFound)
{
    const auto judge = runOf([](int second) { return kLimit * second / 500; });
    EXPECT_FALSE(judge.isFlat(kSeconds));
    EXPECT_NE(judge.report(kSeconds).find("process resident KiB"), std::string::npos);
    EXPECT_NE(judge.report(kSeconds).find("GROWS"), std::string::npos);
}

TEST(GrowthJudgeTest, StepInTheMiddleIsFound)
{
    EXPECT_FALSE(runOf([](int second) { return second < 600 ? 0 : kLimit + 1; }).isFlat(kSeconds));
}

TEST(GrowthJudgeTest, WhatWasNotMeasuredIsNotReported)
{
    EXPECT_EQ(runOf([](int) { return 0; }).report(kSeconds).find("inbound"), std::string::npos);
}
