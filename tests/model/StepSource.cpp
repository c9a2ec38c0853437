#include "tests/model/StepSource.h"

#include <iterator>

namespace {

/// An operation of a process that has joined, how often it comes, and the most that each of its
/// numbers can be.
struct Choice
{
    const char* operation;
    int weight;
    std::vector<int> limits;
};

const std::vector<Choice>& choices()
{
    static const std::vector<Choice> kChoices = {
        {"initManager", 1, {3}},
        {"quitCurrentAccount", 4, {}},
        {"kill", 2, {}},
        {"switchToAccount", 20, {}},
        {"switchToCurrentPin", 4, {}},
        {"popupMainWindow", 8, {2}},
        {"switchShowState", 4, {}},
        {"switchedHide", 5, {}},
        {"windowStateChanged", 18, {}},
        {"changeMergeMode", 7, {3, 2}},
        {"changeCurrentSkin", 4, {4}},
        {"changeCurrentUnread", 12, {4}},
        {"changeCurrentUnreadMark", 8, {2}},
        {"changeLoginState", 4, {4}},
        {"switchLoginState", 3, {5}},
        {"sortAllAccount", 5, {}},
        {"selectedAccount", 2, {}},
        {"checkWindowVisible", 2, {}},
        {"isSelectedAccount", 2, {}},
        {"loginAccountCount", 2, {}},
        {"isInit", 1, {}},
        {"currentPin", 1, {}},
        {"observe", 2, {2}},
        {"show", 3, {2}},
    };
    return kChoices;
}

/// Among them no rectangle, ones without an area, and ones that others fit into.
constexpr int kRects[][4] = {{0, 0, 0, 0},       {7, 9, 0, 0},      {3, 4, 50, 0},
                             {10, 20, 300, 200}, {-5, 0, 300, 200}, {0, 0, 800, 600},
                             {0, 0, 900, 700},   {1, 0, 800, 600},  {0, 0, 900, 500}};

/// The normal and the maximised one more often: they are what sizes are remembered of.
constexpr int kStates[] = {1, 1, 1, 3, 3, 2, 4, 0, 5};

} // namespace

StepSource::StepSource(unsigned seed, int processes)
    : m_random(seed)
    , m_processes(processes)
{
}

int StepSource::below(int limit)
{
    // Not a distribution: those differ between standard libraries.
    return static_cast<int>(m_random() % static_cast<unsigned>(limit));
}

Step StepSource::next(const AccountsModel& model)
{
    const int process = below(m_processes);
    if (!model.isAlive(process))
        return {"start", process, {}};
    if (!model.isJoined(process) && below(2) == 0)
        return {"initManager", process, {below(3)}};

    int weights = 0;
    for (const Choice& each : choices())
        weights += each.weight;
    int drawn = below(weights);
    const Choice* choice = choices().data();
    while (drawn >= choice->weight)
        drawn -= choice++->weight;

    Step step{choice->operation, process, {}};
    for (const int limit : choice->limits)
        step.arguments.push_back(below(limit));
    if (step.operation == "switchToAccount") {
        step.arguments = {below(m_processes + 1) - 1};
    } else if (step.operation == "windowStateChanged") {
        step.arguments = {kStates[below(std::size(kStates))]};
        const auto& rect = kRects[below(std::size(kRects))];
        step.arguments.insert(step.arguments.end(), std::begin(rect), std::end(rect));
    } else if (step.operation == "sortAllAccount") {
        for (int listed = below(m_processes + 1); listed > 0; --listed) {
            step.arguments.push_back(below(m_processes));
            step.arguments.push_back(below(m_processes));
        }
    }
    return step;
}

std::vector<Step> StepSource::steps(int count)
{
    AccountsModel model(m_processes);
    std::vector<Step> result;
    for (int i = 0; i < count; ++i) {
        result.push_back(next(model));
        model.perform(result.back());
        // How much is settled only decides what the next one meets: it is drawn here, too.
        const int drawn = below(20);
        if (drawn < 12)
            result.push_back({"settle", 0, {below(1000)}});
        else if (drawn < 15)
            result.push_back({"together", 0, {}});
        else if (drawn < 17)
            result.push_back({"deliver", below(m_processes), {}});
    }
    result.push_back({"settle", 0, {0}});
    return result;
}

std::string stepText(const Step& step)
{
    return std::to_string(step.process) + ": " + commandLine(step.operation, step.arguments);
}

std::string stepsText(const std::vector<Step>& steps)
{
    std::string text;
    for (const Step& step : steps)
        text += "  " + stepText(step) + '\n';
    return text;
}
