// Workbench processes against the model of their rules.

#include "tests/model/ModelRun.h"
#include "tests/model/StepSource.h"
#include "tests/support/Stress.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

constexpr int kSequences = 7;
constexpr int kOperationsEach = 300;

int processesOf(unsigned seed)
{
    // Any seven in a row have each number from 2 to 8, far apart.
    return 2 + static_cast<int>(3 * seed % 7);
}

/// PAVO_MODEL_SEED=N repeats the sequence of one seed.
std::vector<unsigned> seeds()
{
    const int only = qEnvironmentVariableIntValue("PAVO_MODEL_SEED");
    if (only != 0)
        return {static_cast<unsigned>(only)};
    std::vector<unsigned> all;
    for (int i = 1; i <= stressed(kSequences); ++i)
        all.push_back(static_cast<unsigned>(i));
    return all;
}

} // namespace

TEST(ModelTest, ProcessesDoWhatTheModelSays)
{
    for (const unsigned seed : seeds()) {
        const int processes = processesOf(seed);
        std::cout << "seed " << seed << ", " << processes << " processes" << std::endl;
        const std::vector<Step> steps = StepSource(seed, processes).steps(kOperationsEach);
        const std::optional<Finding> finding = findFailure(steps, processes);
        ASSERT_FALSE(finding) << "PAVO_MODEL_SEED=" << seed << " repeats it. The fewest steps are\n"
                              << stepsText(finding->steps) << finding->what;
    }
}
