// What the library keeps of a process's memory, at once and over many messages.

#include "bench/Measurements.h"
#include "bench/Process.h"
#include "bench/Targets.h"
#include "bench/Usage.h"
#include "bench/accounts/ManagerProbe.h"
#include "bench/accounts/MemberProcess.h"
#include "bench/messages/Transport.h"
#include "pavo_base/Logger.h"

#include <iostream>

namespace {

constexpr const char* kRole = "memory";
constexpr const char* kLoader = "pavo-bench-loader";
constexpr int kGroup = 50;
/// So many messages under way at once at most: what waits in queues is not growth.
constexpr int kBatch = 1000;

/// "open" and "join" tell what each of these steps took, "exchange N" receives and sends N
/// messages, "resident" tells how much it is by now.
int beMeasured(const QStringList& arguments)
{
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(arguments[1]);
    Logger::initialise(log4cplus::OFF_LOG_LEVEL);
    std::unique_ptr<WorkbenchEnd> end;
    const auto growthBy = [](const auto& act) {
        const MemoryUse before = memoryUse();
        act();
        const MemoryUse after = memoryUse();
        return lineOf({after.resident - before.resident, after.own - before.own});
    };
    return obey([&](const std::string& command, const std::string& argument) -> std::string {
        if (command == "open")
            return growthBy([&] { end = makeLibraryEnd(arguments[0]); });
        if (command == "join")
            return growthBy([&] {
                const auto manager = MAManager::Instance();
                manager->initManager(kAppID, pinOf(1), kClassName, titleOf(pinOf(1)), 1);
                manager->loginAccountCount();
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
        return lineOf({memoryUse().resident});
    });
}

const Role memoryRole(kRole, &beMeasured);

void add(const std::string& step, const std::string& residentAndOwn, Figures& figures)
{
    const std::vector<double> numbers = numbersIn(residentAndOwn);
    figures.add("memory, " + step, 0, kLibrary, kKilobytes, {numbers[0]});
    // Wine does not tell.
    if (numbers[1] > 0)
        figures.add("memory, " + step, 0, kLibrary, kOwnKilobytes, {numbers[1]});
}

std::string growthByLoading()
{
    QProcess loader;
    loader.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    loader.start(siblingExecutable(QLatin1String(kLoader)),
                 {siblingExecutable(QStringLiteral(PAVO_IPC_FILE))});
    loader.waitForFinished(-1);
    const QByteArray growth = loader.readAllStandardOutput();
    if (growth.isEmpty()) {
        std::cerr << "pavo-bench: " << kLoader << " says nothing\n";
        std::exit(1);
    }
    return growth.toStdString();
}

/// Has so many messages received and sent, and returns what memory the process occupies then.
double exchange(HostEnd& host, const Child& child, int messages)
{
    const std::string link = linkOf(nowNs());
    for (int done = 0; done < messages; done += kBatch) {
        child->say("exchange " + std::to_string(kBatch));
        host.flood(link, kBatch);
        for (int i = 0; i < kBatch; ++i)
            host.nextLink();
        answerOf(child);
    }
    return numbersIn(ask(child, "resident"))[0];
}

} // namespace

void measureMemory(const Effort& effort, Figures& figures)
{
    const QString installation = uniqueName(QStringLiteral("memory"));
    const Child other = startMember(memberKinds()[0], installation, pinOf(0));
    ask(other, "join");
    ask(other, "seed " + std::to_string(kGroup));
    const auto host = makePipeHost();
    const Child child = startChild(kRole, {host->address(), installation});
    add("loaded", growthByLoading(), figures);
    child->say("open");
    host->awaitWorkbench();
    add("channel", answerOf(child), figures);
    add("group of 50", ask(child, "join"), figures);

    const double warm = exchange(*host, child, effort.soakMessages);
    figures.add("memory, messages", 0, kLibrary, kKilobytes,
                {exchange(*host, child, effort.soakMessages) - warm});
}
