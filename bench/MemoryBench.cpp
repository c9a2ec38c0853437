// What the library keeps of a process's memory, at once and over many messages.

#include "bench/Measurements.h"
#include "bench/Process.h"
#include "bench/Targets.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/messages/Transport.h"
#include "pavo_base/Logger.h"

namespace {

constexpr const char* kRole = "memory";
constexpr int kGroup = 50;
/// So many messages under way at once at most: what waits in queues is not growth.
constexpr int kBatch = 1000;

/// "loaded" and "open" and "joined" tell what each of these steps took, "exchange N" receives and
/// sends N messages, "resident" tells how much there is by now.
int beMeasured(const QStringList& arguments)
{
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(arguments[1]);
    Logger::initialise(log4cplus::OFF_LOG_LEVEL);
    std::unique_ptr<WorkbenchEnd> end;
    MAManagerProbe manager;
    const auto growthBy = [](const auto& act) {
        const double before = residentKb();
        act();
        return lineOf({residentKb() - before});
    };
    return obey([&](const std::string& command, const std::string& argument) -> std::string {
        if (command == "loaded")
            return lineOf({residentKbOf("libpavo_") + residentKbOf("liblog4cplus") +
                           residentKbOf("libjsoncpp")});
        if (command == "open")
            return growthBy([&] { end = makeLibraryEnd(arguments[0]); });
        if (command == "joined")
            return growthBy([&] {
                manager.initManager(kAppID, pinOf(0), kClassName, titleOf(pinOf(0)), 1);
                manager.seed(accountsUpTo(kGroup));
                manager.loginAccountCount();
            });
        if (command == "exchange") {
            const int count = std::atoi(argument.c_str());
            int received = 0;
            end->onRequest = [&](const std::string& link) {
                end->openUrl(link);
                if (++received == count)
                    QCoreApplication::quit();
            };
            handleEventsUntil([&] { return received == count; });
            return "exchanged";
        }
        return lineOf({residentKb()});
    });
}

const Role memoryRole(kRole, &beMeasured);

} // namespace

void measureMemory(const Effort& effort, Figures& figures)
{
    const auto host = makePipeHost();
    const Child child = startChild(kRole, {host->address(), uniqueName(QStringLiteral("memory"))});
    figures.add("memory, loaded", 0, kLibrary, kKilobytes, numbersIn(ask(child, "loaded")));
    child->say("open");
    host->awaitWorkbench();
    figures.add("memory, channel", 0, kLibrary, kKilobytes, numbersIn(answerOf(child)));
    figures.add("memory, group", kGroup, kLibrary, kKilobytes, numbersIn(ask(child, "joined")));

    const std::string link = linkOf(nowNs());
    const auto exchange = [&](int batches) {
        for (int i = 0; i < batches; ++i) {
            child->say("exchange " + std::to_string(kBatch));
            host->flood(link, kBatch);
            for (int k = 0; k < kBatch; ++k)
                host->nextLink();
            answerOf(child);
        }
        return numbersIn(ask(child, "resident"))[0];
    };
    const int batches = effort.soakMessages / kBatch;
    const double warm = exchange(batches);
    figures.add("memory, messages", 0, kLibrary, kKilobytes, {exchange(batches) - warm});
}
