// From the channel's start to the first message that the host reads.

#include "bench/Measurements.h"
#include "bench/Process.h"
#include "bench/Targets.h"
#include "bench/messages/Transport.h"
#include "ipc/KTChannelManager.h"
#include "pavo_base/Logger.h"
#include "platform/HostPipe.h"

namespace {

constexpr const char* kRole = "starter";

/// "start ADDRESS" answers with the moment at which it began.
int beStarter(const QStringList& arguments)
{
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(uniqueName(QStringLiteral("starter")));
    Logger::initialise(log4cplus::OFF_LOG_LEVEL);
    const bool isLibrary = arguments[0] == QLatin1String(kLibrary);
    std::unique_ptr<WorkbenchEnd> floor;
    return obey([&](const std::string&, const std::string& address) {
        const QString pipes = QString::fromStdString(address);
        // What is left of the start before is no part of this one.
        KTChannelManager* const channel = KTChannelManager::sharedInstance();
        channel->startUp(QString(), nullptr, nullptr);
        floor.reset();
        const std::int64_t before = nowNs();
        if (isLibrary) {
            channel->startUp(QStringLiteral("pipe?param=") + pipes, nullptr, nullptr);
            channel->enterMainUI(0, nullptr);
        } else {
            floor = makeFloorEnd(pipes);
            floor->openUrl(linkOf(before));
        }
        return std::to_string(before);
    });
}

const Role starterRole(kRole, &beStarter);

double startOnce(const Child& starter)
{
    pavo::HostPipe toWorkbench(uniqueName(QStringLiteral("in")),
                               pavo::HostPipe::Direction::HostWrites);
    pavo::HostPipe fromWorkbench(uniqueName(QStringLiteral("out")),
                                 pavo::HostPipe::Direction::HostReads);
    starter->say(
        "start " +
        (toWorkbench.fullName() + QLatin1Char('&') + fromWorkbench.fullName()).toStdString());
    QByteArray message;
    toWorkbench.awaitClient();
    fromWorkbench.awaitClient();
    fromWorkbench.read(message);
    const auto after = static_cast<double>(nowNs());
    return (after - numbersIn(answerOf(starter))[0]) / kNsPerUs;
}

} // namespace

void measureStart(const Effort& effort, Figures& figures)
{
    constexpr const char* kNames[] = {kLibrary, kFloor};
    for (int round = 0; round < effort.rounds; ++round) {
        for (const char* const name : kNames) {
            const Child starter = startChild(kRole, {QLatin1String(name)});
            for (int i = 0; i < effort.starts; ++i)
                figures.add("start", 0, name, kMicroseconds, {startOnce(starter)});
        }
    }
}
