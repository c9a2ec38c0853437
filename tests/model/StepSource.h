#pragma once

#include "tests/model/AccountsModel.h"

#include <random>

/// Operations of workbenches at random, and how far what they post is delivered in between.
///
/// Besides the operations of the model there are
///     settle SEED   processes with mail take turns, drawn from SEED, until all mail is handled
///     together      all of them handle their mail at once
/// neither of which is of one process.
class StepSource
{
public:
    StepSource(unsigned seed, int processes);

    std::vector<Step> steps(int count);

private:
    Step next(const AccountsModel& model);
    int below(int limit);

    std::mt19937 m_random;
    int m_processes;
};

std::string stepText(const Step& step);
std::string stepsText(const std::vector<Step>& steps);
