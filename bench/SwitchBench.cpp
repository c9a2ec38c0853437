// The front goes from one account's process to another's.

#include "bench/Measurements.h"
#include "bench/Targets.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/MemberProcess.h"

namespace {

constexpr int kSizes[] = {2, 10, 100, 500};

struct Pair
{
    explicit Pair(const MemberKind& kind)
        : name(kind.name)
        , place(kind.makePlace ? kind.makePlace() : nullptr)
    {
        const QString installation = uniqueName(QStringLiteral("switch"));
        for (const int number : {0, 1}) {
            pins.push_back(pinOf(number));
            members.push_back(
                startMember(kind, installation, pins.back(), place ? place->address() : QString()));
            ask(members.back(), "join");
        }
    }
    const char* name;
    std::unique_ptr<MeetingPlace> place;
    std::vector<std::string> pins;
    std::vector<Child> members;
};

void switchOnce(const Pair& pair, std::size_t from, int size, Figures& figures)
{
    const std::size_t to = 1 - from;
    ask(pair.members[to], "await");
    const auto left = numbersIn(ask(pair.members[from], "switch " + pair.pins[to]));
    const auto came = numbersIn(answerOf(pair.members[to]));
    figures.add("switch, shown", size, pair.name, kMicroseconds, {(came[1] - left[0]) / kNsPerUs});
    figures.add("switch, done", size, pair.name, kMicroseconds, {(left[1] - left[0]) / kNsPerUs});
}

} // namespace

void measureSwitch(const Effort& effort, Figures& figures)
{
    for (int round = 0; round < effort.rounds; ++round) {
        for (const MemberKind& kind : memberKinds()) {
            const Pair pair(kind);
            for (const int size : kSizes) {
                for (const Child& member : pair.members)
                    ask(member, "seed " + std::to_string(size));
                for (int i = 0; i < 2 * effort.switches; ++i)
                    switchOnce(pair, static_cast<std::size_t>(i % 2), size, figures);
            }
        }
    }
}
