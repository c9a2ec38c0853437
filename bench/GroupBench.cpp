// Merging and separating the windows of a whole group, and joining one.

#include "bench/Measurements.h"
#include "bench/Targets.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/MemberProcess.h"

#include <algorithm>

namespace {

constexpr int kSizes[] = {2, 5, 10, 25, 50};
constexpr std::size_t kKinds = 2; // the library and the floor

struct Group
{
    explicit Group(const MemberKind& memberKind)
        : kind(memberKind)
        , installation(uniqueName(QStringLiteral("group")))
    {
    }
    void growTo(int size)
    {
        for (int number = static_cast<int>(members.size()); number < size; ++number) {
            members.push_back(startMember(kind, installation, pinOf(number)));
            ask(members.back(), "join");
        }
    }
    /// How long it takes until every member was told.
    [[nodiscard]] double changeMode(int mode) const
    {
        for (std::size_t i = 1; i < members.size(); ++i)
            ask(members[i], "await");
        const auto first = numbersIn(ask(members[0], "mode " + std::to_string(mode)));
        double last = first[1];
        for (std::size_t i = 1; i < members.size(); ++i)
            last = std::max(last, numbersIn(answerOf(members[i]))[1]);
        return (last - first[0]) / kNsPerUs;
    }

    const MemberKind& kind;
    const QString installation;
    std::vector<Child> members;
};

void mergeAndSeparate(const Group& group, int size, Figures& figures)
{
    figures.add("group, separating", size, group.kind.name, kMicroseconds,
                {group.changeMode(kMASeparate)});
    figures.add("group, merging", size, group.kind.name, kMicroseconds,
                {group.changeMode(kMAMerged)});
}

void measureRound(const Effort& effort, Figures& figures)
{
    Group groups[kKinds] = {Group(memberKinds()[0]), Group(memberKinds()[1])};
    for (const int size : kSizes) {
        if (size > effort.processes)
            break;
        for (Group& group : groups)
            group.growTo(size);
        for (int i = 0; i < effort.merges; ++i) {
            for (const Group& group : groups)
                mergeAndSeparate(group, size, figures);
        }
    }
    for (const Group& group : groups) {
        const Child newcomer = startMember(group.kind, group.installation, pinOf(100));
        for (int i = 0; i < effort.starts; ++i) {
            figures.add("joining", static_cast<int>(group.members.size()), group.kind.name,
                        kMicroseconds, numbersIn(ask(newcomer, "join")));
            ask(newcomer, "quit");
        }
    }
}

} // namespace

void measureGroup(const Effort& effort, Figures& figures)
{
    for (int round = 0; round < effort.groups; ++round)
        measureRound(effort, figures);
}
