// Whether the model test would notice.

#include "tests/model/Explanation.h"
#include "tests/model/ModelRun.h"
#include "tests/model/Shrink.h"
#include "tests/model/StepSource.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Records = AccountsModel::Records;

AccountsModel joinedModel(int processes)
{
    AccountsModel model(processes);
    for (int i = 0; i < processes; ++i) {
        model.perform({"start", i, {}});
        model.perform({"initManager", i, {1}});
    }
    return model;
}

/// The processes handle their mail in this order; the reports of all.
std::vector<Records> deliverInOrder(AccountsModel& model, const std::vector<int>& order)
{
    std::vector<Records> reports(static_cast<std::size_t>(model.count()));
    for (const int process : order) {
        const Records records = model.deliverOne(process);
        Records& report = reports[static_cast<std::size_t>(process)];
        report.insert(report.end(), records.begin(), records.end());
    }
    return reports;
}

} // namespace

TEST(ShrinkTest, LeavesWhatIsNeededInItsOrder)
{
    std::vector<int> numbers(100);
    std::generate(numbers.begin(), numbers.end(), [n = 0]() mutable { return n++; });
    const auto needs = [](std::vector<int> needed) {
        return [needed](const std::vector<int>& some) {
            return std::includes(some.begin(), some.end(), needed.begin(), needed.end());
        };
    };
    for (const std::vector<int>& needed :
         {std::vector<int>{}, {0}, {99}, {3, 71}, {0, 1, 98, 99}, {10, 11, 12, 50}})
        EXPECT_EQ(shrunk<int>(numbers, needs(needed)), needed);
}

TEST(ShrinkTest, LooksAgainAtWhatWasNeededBefore)
{
    // 1 goes only once 2 is gone.
    const auto fails = [](const std::vector<int>& some) {
        return some.size() == 3 || some == std::vector<int>{1, 3} || some == std::vector<int>{3};
    };
    EXPECT_EQ(shrunk<int>({1, 2, 3}, fails), std::vector<int>{3});
}

TEST(ExplanationTest, AllowsEveryOrderAndNothingElse)
{
    AccountsModel before = joinedModel(3);
    before.perform({"switchToAccount", 0, {1}});
    before.perform({"switchToAccount", 0, {2}});
    ASSERT_TRUE(before.hasMail(1) && before.hasMail(2) && !before.hasMail(0));

    AccountsModel last2 = before;
    const std::vector<Records> reports2 = deliverInOrder(last2, {1, 2, 1, 0});
    AccountsModel last1 = before;
    const std::vector<Records> reports1 = deliverInOrder(last1, {2, 1, 0, 2});
    ASSERT_NE(last1.segmentText(), last2.segmentText());

    AccountsModel model = before;
    EXPECT_FALSE(explain(model, reports1, last2.segmentText()));
    EXPECT_FALSE(explain(model, reports2, last1.segmentText()));
    EXPECT_EQ(model.stateText(), before.stateText());
    EXPECT_TRUE(explain(model, reports1, last1.segmentText()));
    EXPECT_EQ(model.stateText(), last1.stateText());
    model = before;
    EXPECT_TRUE(explain(model, reports2, last2.segmentText()));
    EXPECT_EQ(model.stateText(), last2.stateText());

    std::vector<Records> less = reports2;
    less[0].pop_back();
    model = before;
    EXPECT_FALSE(explain(model, less, last2.segmentText()));
    less[0].push_back(reports2[0].back());
    less[0].push_back("> 2 0");
    EXPECT_FALSE(explain(model, less, last2.segmentText()));
}

TEST(ModelSelfTest, WrongRuleIsFoundAndShrunk)
{
    const WrongRule hidingIsForgotten = [](AccountsModel& model, const Step& step) {
        if (step.operation == "switchedHide")
            model.process(step.process).windowState = 1;
    };
    const std::vector<Step> needed = {{"start", 0, {}},
                                      {"initManager", 0, {1}},
                                      {"switchedHide", 0, {}},
                                      {"switchToAccount", 0, {0}}};
    std::vector<Step> steps;
    for (const Step& each : needed) {
        steps.push_back(each);
        steps.push_back({"isInit", 0, {}});
        steps.push_back({"changeCurrentSkin", 0, {static_cast<int>(steps.size())}});
        steps.push_back({"settle", 0, {0}});
    }
    const std::optional<Finding> finding = findFailure(steps, 1, hidingIsForgotten);
    ASSERT_TRUE(finding);
    EXPECT_EQ(stepsText(finding->steps), stepsText(needed));
    EXPECT_NE(finding->what, "");
    EXPECT_FALSE(ModelRun(1).run(steps)) << "the rules are right without it";
}

TEST(ModelSelfTest, LostMessageIsFoundAlsoWhenAllGoAtOnce)
{
    const std::vector<Step> steps = {
        {"start", 0, {}},        {"initManager", 0, {1}},     {"start", 1, {}},
        {"initManager", 1, {1}}, {"switchToAccount", 0, {1}}, {"together", 0, {}}};
    EXPECT_FALSE(ModelRun(2).run(steps));
    const std::optional<Failure> failure = ModelRun(2, [](AccountsModel& model, const Step& step) {
                                               if (step.operation == "switchToAccount")
                                                   model.process(1).mail.clear();
                                           }).run(steps);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->step, steps.size() - 1);
}
