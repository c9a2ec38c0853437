// Merging and separating the windows of a whole group, and joining one.

#include "bench/Measurements.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/MemberProcess.h"

#include <algorithm>

namespace {

constexpr std::size_t kSizes[] = {2, 5, 10, 25, 50};

struct Group
{
    explicit Group(MemberIndex memberKind)
        : kind(memberKind)
        , installation(uniqueName(QStringLiteral("group")))
    {
    }
    void growTo(std::size_t size)
    {
        while (members.size() < size) {
            members.push_back(
                startMember(kind, installation, pinOf(static_cast<int>(members.size()))));
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

    MemberIndex kind;
    QString installation;
    std::vector<Child> members;
};

} // namespace

void measureGroup(const Effort& effort, Figures& figures)
{
    Group groups[] = {Group(kLibraryMember), Group(kFloorMember)};
    for (const std::size_t size : kSizes) {
        for (Group& group : groups)
            group.growTo(size);
        const auto parameter = static_cast<int>(size);
        for (int i = 0; i < effort.merges * effort.rounds; ++i) {
            for (const Group& group : groups) {
                const char* const name = kMemberKinds[group.kind].name;
                figures.add("group, separating", parameter, name, kMicroseconds,
                            {group.changeMode(kMASeparate)});
                figures.add("group, merging", parameter, name, kMicroseconds,
                            {group.changeMode(kMAMerged)});
            }
        }
    }
    Child newcomers[] = {
        startMember(kLibraryMember, groups[0].installation, pinOf(100)),
        startMember(kFloorMember, groups[1].installation, pinOf(100)),
    };
    for (int i = 0; i < effort.starts * effort.rounds; ++i) {
        for (std::size_t k = 0; k < 2; ++k) {
            figures.add("joining", 50, kMemberKinds[groups[k].kind].name, kMicroseconds,
                        numbersIn(ask(newcomers[k], "join")));
            ask(newcomers[k], "quit");
        }
    }
}
