#include "tests/model/ModelRun.h"

#include "tests/model/Explanation.h"
#include "tests/model/Shrink.h"
#include "tests/model/StepSource.h"
#include "tests/model/StoredState.h"
#include "tests/support/AccountTexts.h"
#include "tests/support/SegmentTexts.h"
#include "tests/support/Wait.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <algorithm>
#include <iostream>

namespace {

/// How long fewer steps are looked for. Where one try is a process that hangs, it takes long.
constexpr int kShrinkingMs = 10 * kDeadlineMs;

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += "      " + line + '\n';
    return text;
}

const std::string kNoSegment = "none";

std::string storedText()
{
    const auto isBlank = [](const std::string& region) {
        return region.find_first_not_of('\0') == std::string::npos;
    };
    const std::optional<SegmentTexts> texts = readSegmentTexts();
    if (!texts || (isBlank(texts->selected) && isBlank(texts->accounts)))
        return kNoSegment;
    const std::optional<StoredState> state = storedState();
    return state ? segmentText(state->selected, state->accounts) : "no valid texts";
}

void useNewApplicationName()
{
    static int number = 0;
    QCoreApplication::setApplicationName(
        QStringLiteral("pavo-model-%1-%2").arg(QCoreApplication::applicationPid()).arg(++number));
}

} // namespace

ModelRun::ModelRun(int processes, WrongRule wrongRule)
    : m_model(processes)
    , m_wrongRule(std::move(wrongRule))
{
    useNewApplicationName();
}

std::optional<Failure> ModelRun::run(const std::vector<Step>& steps)
{
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (!perform(steps[i]) || !expectSegment())
            return Failure{i, m_failure};
    }
    for (const auto& [number, process] : m_processes) {
        if (!expect("exit code of " + std::to_string(number), "0", std::to_string(process->end())))
            return Failure{steps.size() - 1, m_failure};
    }
    return {};
}

bool ModelRun::perform(const Step& step)
{
    if (step.operation == "settle")
        return settle(std::mt19937(static_cast<unsigned>(step.arguments.at(0))));
    if (step.operation == "together")
        return settleTogether();
    return !m_model.isPossible(step) || performOne(step);
}

bool ModelRun::performOne(const Step& step)
{
    const Records expected = m_model.perform(step);
    const Records actual = reality(step);
    if (m_wrongRule)
        m_wrongRule(m_model, step);
    return expect(stepText(step), joined(expected), joined(actual));
}

ModelRun::Records ModelRun::reality(const Step& step)
{
    if (step.operation == "kill") {
        m_processes.erase(step.process);
        return {"killed"};
    }
    if (step.operation != "start")
        return m_processes.at(step.process)->ask(commandLine(step.operation, step.arguments));
    m_processes[step.process] = std::make_unique<WorkbenchProcess>(step.process);
    return m_processes.at(step.process)->reply();
}

bool ModelRun::settle(std::mt19937 random)
{
    std::vector<int> waiting;
    do {
        waiting.clear();
        for (const auto& [number, process] : m_processes) {
            if (m_model.hasMail(number))
                waiting.push_back(number);
        }
        if (!waiting.empty() && !performOne({"deliver", waiting[random() % waiting.size()], {}}))
            return false;
    } while (!waiting.empty());
    return expectQuiet();
}

/// Nobody has got anything that the model knows nothing of.
bool ModelRun::expectQuiet()
{
    for (const auto& [number, process] : m_processes)
        process->say("deliver");
    bool isQuiet = true;
    for (const auto& [number, process] : m_processes)
        isQuiet = expect("nothing for " + std::to_string(number), joined({"done"}),
                         joined(process->reply())) &&
                  isQuiet;
    return isQuiet;
}

bool ModelRun::settleTogether()
{
    std::vector<Records> reports(static_cast<std::size_t>(m_model.count()));
    bool isQuiet = false;
    while (!isQuiet) {
        isQuiet = true;
        for (const auto& [number, process] : m_processes)
            process->say("deliver");
        for (const auto& [number, process] : m_processes) {
            const Records reply = process->reply();
            if (reply.empty())
                return expect("reply of " + std::to_string(number), "one", "none");
            isQuiet = isQuiet && reply.size() == 1;
            Records& report = reports[static_cast<std::size_t>(number)];
            report.insert(report.end(), reply.begin() + 1, reply.end());
        }
    }
    if (explain(m_model, reports, m_model.hasSegment() ? storedText() : m_model.segmentText()))
        return true;
    std::string all;
    for (std::size_t i = 0; i < reports.size(); ++i)
        all += "    " + std::to_string(i) + ":\n" + joined(reports[i]);
    return expect("all together",
                  "    what some order leads to from\n" + m_model.stateText() + '\n', all);
}

bool ModelRun::expectSegment()
{
    return expect("segment", m_model.hasSegment() ? m_model.segmentText() : kNoSegment,
                  storedText());
}

bool ModelRun::expect(const std::string& what, const std::string& expected,
                      const std::string& actual)
{
    if (expected == actual)
        return true;
    m_failure += what + "\n    the model:\n" + expected + "\n    the processes:\n" + actual + '\n';
    return false;
}

std::optional<Finding> findFailure(const std::vector<Step>& steps, int processes,
                                   const WrongRule& wrongRule)
{
    std::string what;
    QDeadlineTimer enough(QDeadlineTimer::Forever);
    const auto fails = [&](const std::vector<Step>& part) {
        if (enough.hasExpired())
            return false;
        const std::optional<Failure> failure = ModelRun(processes, wrongRule).run(part);
        if (failure)
            what = failure->what;
        return failure.has_value();
    };
    const std::optional<Failure> failure = ModelRun(processes, wrongRule).run(steps);
    if (!failure)
        return {};
    what = failure->what;
    std::cout << "step " << failure->step << ": " << what << "looking for fewer steps" << std::endl;
    enough.setRemainingTime(kShrinkingMs);
    const auto end = steps.begin() + static_cast<std::ptrdiff_t>(failure->step) + 1;
    std::vector<Step> few = shrunk<Step>({steps.begin(), end}, fails);
    return Finding{std::move(few), what};
}
