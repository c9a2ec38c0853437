#pragma once

#include "tests/model/AccountsModel.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>

/// What the processes did that the model does not allow.
struct Failure
{
    std::size_t step; ///< that showed it
    std::string what;
};

/// Changes what the model holds after a step: to try whether a wrong rule is noticed.
using WrongRule = std::function<void(AccountsModel& model, const Step& step)>;

/// One installation, as real processes and as the model says, step by step.
class ModelRun
{
public:
    explicit ModelRun(int processes, WrongRule wrongRule = {});

    /// Skips what nobody can do, so that any part of a sequence is one.
    std::optional<Failure> run(const std::vector<Step>& steps);

private:
    using Records = AccountsModel::Records;

    bool perform(const Step& step);
    bool performOne(const Step& step);
    bool settle(std::mt19937 random);
    bool settleTogether();
    bool expectSegment();
    bool expectQuiet();
    Records reality(const Step& step);
    bool expect(const std::string& what, const std::string& expected, const std::string& actual);

    AccountsModel m_model;
    WrongRule m_wrongRule;
    std::map<int, std::unique_ptr<WorkbenchProcess>> m_processes;
    std::string m_failure;
};

/// The fewest steps that the processes fail the model in.
struct Finding
{
    std::vector<Step> steps;
    std::string what;
};

/// Runs `steps`. What fails is run again, in parts, until nothing can be left out any more.
std::optional<Finding> findFailure(const std::vector<Step>& steps, int processes,
                                   const WrongRule& wrongRule = {});
