// One change of the shared list, alone and with other processes about the same.

#include "bench/Measurements.h"
#include "bench/Process.h"
#include "bench/Targets.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/StoreUser.h"
#include "pavo_base/Logger.h"

#include <algorithm>

namespace {

constexpr const char* kRole = "store-user";
constexpr int kSizes[] = {1, 10, 100, 500};
constexpr int kCrowds[] = {1, 2, 4, 8};
constexpr int kLargestCrowd = 8;

constexpr StoreKind kKinds[] = {
    {kLibrary, &joinLibraryStore},       {kFloor, &joinFloorStore},
    {kBareLock, &joinUngatedFloorStore}, {kQtSegment, &joinQtStore},
    {kBoostSegment, &joinBoostStore},
};

int beStoreUser(const QStringList& arguments)
{
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(arguments[1]);
    Logger::initialise(log4cplus::OFF_LOG_LEVEL);
    const auto user = kKinds[arguments[0].toInt()].join(arguments[2].toStdString());
    int loginState = 0;
    return obey([&](const std::string& command, const std::string& argument) -> std::string {
        const int count = std::atoi(argument.c_str());
        if (command == "seed") {
            user->seed(count);
            return "seeded";
        }
        std::vector<double> durations;
        for (int i = 0; i < count; ++i) {
            const std::int64_t before = nowNs();
            user->change(++loginState);
            durations.push_back(static_cast<double>(nowNs() - before) / kNsPerUs);
        }
        return lineOf(durations);
    });
}

const Role storeRole(kRole, &beStoreUser);

struct Contestant
{
    explicit Contestant(const StoreKind& kind)
        : name(kind.name)
    {
        const QString installation = uniqueName(QStringLiteral("store"));
        for (int i = 0; i < kLargestCrowd; ++i)
            users.push_back(startChild(kRole, {QString::number(&kind - kKinds), installation,
                                               QString::fromStdString(pinOf(i))}));
    }
    const char* name;
    std::vector<Child> users;
};

std::string nameFor(int crowd)
{
    return crowd == 1 ? "store" : "store, " + std::to_string(crowd) + " processes";
}

} // namespace

void measureStore(const Effort& effort, Figures& figures)
{
    std::vector<Contestant> contestants;
    for (const StoreKind& kind : kKinds)
        contestants.emplace_back(kind);
    for (const int size : kSizes) {
        const std::string change =
            "change " + std::to_string(std::max(5, effort.changes * 20 / (20 + size)));
        for (const Contestant& each : contestants)
            ask(each.users.front(), "seed " + std::to_string(size));
        for (const int crowd : kCrowds) {
            for (int round = 0; round < effort.rounds; ++round) {
                for (const Contestant& each : contestants) {
                    for (int i = 0; i < crowd; ++i)
                        each.users[static_cast<std::size_t>(i)]->say(change);
                    for (int i = 0; i < crowd; ++i)
                        figures.add(nameFor(crowd), size, each.name, kMicroseconds,
                                    numbersIn(answerOf(each.users[static_cast<std::size_t>(i)])));
                }
            }
        }
    }
}
