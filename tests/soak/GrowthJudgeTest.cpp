#include "tests/soak/GrowthJudge.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

namespace {

constexpr int kSeconds = 1000;
constexpr long long kNone = GrowthJudge::kNone;
const long long kLimit = GrowthJudge::kQuantities[0].limit;

struct Judgement
{
    bool isFlat;
    std::string report;
};

Judgement judge(const GrowthJudge& samples)
{
    std::ostringstream report;
    const bool isFlat = samples.isFlat(kSeconds, report);
    return {isFlat, report.str()};
}

/// A run of one process whose resident memory is `residentAt` each second.
Judgement runOf(const std::function<long long(int)>& residentAt)
{
    GrowthJudge samples({{"process", GrowthJudge::kQuantities.size()}});
    for (int second = 0; second < kSeconds; ++second)
        samples.add("process", second, {residentAt(second), 1, 1, 1, 1, 1});
    return judge(samples);
}

} // namespace

TEST(GrowthJudgeTest, WarmingUpAndBurstsAreNoGrowth)
{
    const auto judgement = runOf([](int second) {
        const bool isBurst = second % 10 == 0;
        return second < 100 ? 0 : 100000 + (isBurst ? 5 * kLimit : second % 7);
    });
    EXPECT_TRUE(judgement.isFlat);
    EXPECT_EQ(judgement.report.find("GROWS"), std::string::npos);
}

TEST(GrowthJudgeTest, SteadyGrowthIsFound)
{
    const auto judgement = runOf([](int second) { return kLimit * second / 500; });
    EXPECT_FALSE(judgement.isFlat);
    EXPECT_EQ(judgement.report.find("process resident KiB"), 0U);
    EXPECT_NE(judgement.report.find("GROWS\nprocess heap KiB"), std::string::npos);
}

TEST(GrowthJudgeTest, StepInTheMiddleIsFound)
{
    EXPECT_FALSE(runOf([](int second) { return second < 600 ? 0 : kLimit + 1; }).isFlat);
}

TEST(GrowthJudgeTest, SingleMissingValuesDoNotMatter)
{
    EXPECT_TRUE(runOf([](int second) { return second % 2 == 0 ? kNone : 7; }).isFlat);
}

TEST(GrowthJudgeTest, WhatWasNotMeasuredEarlyOrLateIsNotFlat)
{
    for (const auto& isMissing : std::vector<std::function<bool(int)>>{
             [](int second) { return second < 500; }, [](int second) { return second > 500; },
             [](int) { return true; }}) {
        const auto judgement = runOf([&](int second) { return isMissing(second) ? kNone : 0; });
        EXPECT_FALSE(judgement.isFlat);
        EXPECT_NE(judgement.report.find("process resident KiB: "), std::string::npos);
        EXPECT_NE(judgement.report.find("NOT MEASURED"), std::string::npos);
    }
}

TEST(GrowthJudgeTest, ProcessWithoutSamplesIsNotFlat)
{
    EXPECT_FALSE(judge(GrowthJudge({{"process", 1}})).isFlat);
}

TEST(GrowthJudgeTest, LooksOnlyAtWhatIsMeasuredOfAProcess)
{
    GrowthJudge samples({{"process", 2}});
    for (int second = 0; second < kSeconds; ++second) {
        samples.add("process", second, {1, 1});
        samples.add("another", second, {kLimit * second, 1});
    }
    const auto judgement = judge(samples);
    EXPECT_TRUE(judgement.isFlat);
    EXPECT_EQ(judgement.report.find("another"), std::string::npos);
    EXPECT_EQ(judgement.report.find("handles"), std::string::npos);
}
