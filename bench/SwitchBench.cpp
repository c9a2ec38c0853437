// The front goes from one account's process to another's.

#include "bench/DBus.h"
#include "bench/Measurements.h"
#include "bench/accounts/DBusKeeper.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/MemberProcess.h"

namespace {

constexpr int kSizes[] = {2, 10, 100, 500};

struct Pair
{
    Pair(MemberIndex kind, const QString& bus)
        : name(kMemberKinds[kind].name)
    {
        const QString installation = uniqueName(QStringLiteral("switch"));
        for (const int number : {0, 1}) {
            pins.push_back(pinOf(number));
            members.push_back(startMember(kind, installation, pins.back(), bus));
            ask(members.back(), "join");
        }
    }
    const char* name;
    std::vector<std::string> pins;
    std::vector<Child> members;
};

} // namespace

void measureSwitch(const Effort& effort, Figures& figures)
{
    const PrivateBus bus;
    const PrivateBus freeBus;
    const auto keeper = startDBusKeeper(bus.address());
    std::vector<Pair> pairs;
    for (const MemberIndex kind : {kLibraryMember, kFloorMember, kDBusMember})
        pairs.emplace_back(kind, bus.address());
    pairs.emplace_back(kFreeDBusMember, freeBus.address());
    for (const int size : kSizes) {
        for (const Pair& pair : pairs) {
            for (const Child& member : pair.members)
                ask(member, "seed " + std::to_string(size));
        }
        for (int round = 0; round < effort.rounds; ++round) {
            for (const Pair& pair : pairs) {
                for (int i = 0; i < 2 * effort.switches; ++i) {
                    const auto from = static_cast<std::size_t>(i % 2);
                    const std::size_t to = 1 - from;
                    ask(pair.members[to], "await");
                    const auto left = numbersIn(ask(pair.members[from], "switch " + pair.pins[to]));
                    const auto came = numbersIn(answerOf(pair.members[to]));
                    figures.add("switch, shown", size, pair.name, kMicroseconds,
                                {(came[1] - left[0]) / kNsPerUs});
                    figures.add("switch, done", size, pair.name, kMicroseconds,
                                {(left[1] - left[0]) / kNsPerUs});
                }
            }
        }
    }
}
