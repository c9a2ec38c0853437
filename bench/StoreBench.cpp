// One change of the shared list, alone and with other processes about the same.

#include "bench/Measurements.h"
#include "bench/Peers.h"
#include "bench/Process.h"
#include "bench/Targets.h"
#include "bench/accounts/ManagerProbe.h"
#include "pavo_base/Logger.h"

#include <algorithm>
#include <numeric>
#include <thread>

namespace {

constexpr const char* kRole = "store-user";
constexpr int kSizes[] = {1, 10, 100, 500};
constexpr int kCrowds[] = {2, 4, 8};
/// From the command on, until all that shall contend are awake; and for how long they do then.
constexpr std::int64_t kGettingReadyNs = 5000000;
constexpr std::int64_t kContentionNs = 20000000;

const std::vector<StoreKind>& storeKinds()
{
    static const auto kinds = withPeers(std::vector<StoreKind>{
        {kLibrary, &joinLibraryStore},
        {kFloor, &joinFloorStore},
        {kBareLock, &joinUngatedFloorStore},
        {kQtSegment, &joinQtStore},
    });
    return kinds;
}

/// "seed N" makes the list anew; "change N" changes it so many times and "contend NS" from that
/// moment on for a while, which are both answered with how long each change took.
int beStoreUser(const QStringList& arguments)
{
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(arguments[1]);
    Logger::initialise(log4cplus::OFF_LOG_LEVEL);
    const auto user = storeKinds()[arguments[0].toUInt()].join(arguments[2].toStdString());
    int loginState = 0;
    const auto changeWhile = [&](const auto& goesOn) {
        std::vector<double> durations;
        do {
            const std::int64_t before = nowNs();
            user->change(++loginState);
            durations.push_back(static_cast<double>(nowNs() - before) / kNsPerUs);
        } while (goesOn(durations.size()));
        return lineOf(durations);
    };
    return obey([&](const std::string& command, const std::string& argument) -> std::string {
        const std::int64_t number = std::atoll(argument.c_str());
        if (command == "seed") {
            user->seed(static_cast<int>(number));
            return "seeded";
        }
        if (command == "change")
            return changeWhile(
                [&](std::size_t done) { return done < static_cast<std::size_t>(number); });
        std::this_thread::sleep_for(std::chrono::nanoseconds(number - nowNs()));
        return changeWhile([&](std::size_t) { return nowNs() < number + kContentionNs; });
    });
}

const Role storeRole(kRole, &beStoreUser);

using Users = std::vector<Child>;

Users startUsers(const StoreKind& kind, int count)
{
    const QString installation = uniqueName(QStringLiteral("store"));
    Users users;
    for (int i = 0; i < count; ++i)
        users.push_back(startChild(kRole, {QString::number(&kind - storeKinds().data()),
                                           installation, QString::fromStdString(pinOf(i))}));
    return users;
}

void contend(const Users& users, int crowd, int size, const char* name, Figures& figures)
{
    const std::string measurement = "store, " + std::to_string(crowd) + " processes";
    const std::string command = "contend " + std::to_string(nowNs() + kGettingReadyNs);
    const auto end = users.begin() + crowd;
    std::for_each(users.begin(), end, [&](const Child& user) { user->say(command); });
    double perSecond = 0;
    std::for_each(users.begin(), end, [&](const Child& user) {
        const std::vector<double> durations = numbersIn(answerOf(user));
        figures.add(measurement, size, name, kMicroseconds, durations);
        perSecond += 1e6 * static_cast<double>(durations.size()) /
                     std::accumulate(durations.begin(), durations.end(), 0.0);
    });
    figures.add(measurement, size, name, kChangesPerSecond, {perSecond});
}

} // namespace

void measureStore(const Effort& effort, Figures& figures)
{
    for (int round = 0; round < effort.rounds; ++round) {
        for (const StoreKind& kind : storeKinds()) {
            const Users users = startUsers(kind, std::min(effort.processes, kCrowds[2]));
            for (const int size : kSizes) {
                ask(users.front(), "seed " + std::to_string(size));
                const int changes = std::max(5, effort.changes * 20 / (20 + size));
                figures.add("store", size, kind.name, kMicroseconds,
                            numbersIn(ask(users.front(), "change " + std::to_string(changes))));
                for (const int crowd : kCrowds) {
                    if (crowd <= effort.processes)
                        contend(users, crowd, size, kind.name, figures);
                }
            }
        }
    }
}
