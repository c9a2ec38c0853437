// Messages between a host and a workbench: one at a time, and as many as there is time for.

#include "bench/Measurements.h"
#include "bench/Peers.h"
#include "bench/Process.h"
#include "bench/Targets.h"
#include "bench/Usage.h"
#include "bench/messages/Transport.h"
#include "pavo_base/Logger.h"

#include <thread>

namespace {

constexpr const char* kRole = "workbench";
constexpr std::chrono::milliseconds kQuietGap(1);

const std::vector<Transport>& transports()
{
    static const auto all = withPeers(std::vector<Transport>{
        {kLibrary, &makePipeHost, &makeLibraryEnd},
        {kGathered, &makeGatheringHost, &makeLibraryEnd},
        {kFloor, &makePipeHost, &makeFloorEnd},
    });
    return all;
}

/// The workbench's side: "receive N" answers at the first message, then with what it measured,
/// "send N" and "quiet N" send, "used" tells the processor time since.
class Workbench
{
public:
    explicit Workbench(WorkbenchEnd& end)
        : m_end(end)
    {
        m_end.onRequest = [this](const std::string& link) {
            const std::int64_t now = nowNs();
            if (m_received++ == 0)
                m_first = now;
            m_last = now;
            if (m_latencies.size() < m_latencies.capacity())
                m_latencies.push_back(static_cast<double>(now - momentIn(link)) / kNsPerUs);
            if (m_received == m_expected)
                QCoreApplication::quit();
        };
    }

    std::string receive(int count)
    {
        m_received = 0;
        m_expected = count;
        m_latencies.clear();
        m_latencies.reserve(static_cast<std::size_t>(std::min(count, 1000)));
        const double before = processorTimeUs();
        sayToParent("receiving");
        handleEventsUntil([&] { return m_received == m_expected; });
        std::vector<double> answer{1e9 * (count - 1) / static_cast<double>(m_last - m_first),
                                   (processorTimeUs() - before) / count};
        answer.insert(answer.end(), m_latencies.begin(), m_latencies.end());
        return lineOf(answer);
    }

    std::string send(int count, std::chrono::milliseconds gap)
    {
        m_before = processorTimeUs();
        for (int i = 0; i < count; ++i) {
            m_end.openUrl(linkOf(nowNs()));
            if (gap.count() > 0)
                std::this_thread::sleep_for(gap);
        }
        return "sent";
    }

    std::string run(const std::string& command, const std::string& argument)
    {
        const int count = std::atoi(argument.c_str());
        if (command == "receive")
            return receive(count);
        if (command == "send")
            return send(count, {});
        if (command == "quiet")
            return send(count, kQuietGap);
        return lineOf({processorTimeUs() - m_before});
    }

private:
    WorkbenchEnd& m_end;
    int m_received = 0;
    int m_expected = 0;
    std::int64_t m_first = 0;
    std::int64_t m_last = 0;
    std::vector<double> m_latencies;
    double m_before = 0;
};

int beWorkbench(const QStringList& arguments)
{
    int argc = 0;
    QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(uniqueName(QStringLiteral("workbench")));
    Logger::initialise(log4cplus::OFF_LOG_LEVEL);
    const auto end = transports()[arguments[0].toUInt()].workbench(arguments[1]);
    Workbench workbench(*end);
    return obey([&](const std::string& command, const std::string& argument) {
        return workbench.run(command, argument);
    });
}

const Role workbenchRole(kRole, &beWorkbench);

struct Contestant
{
    explicit Contestant(const Transport& transport)
        : name(transport.name)
        , host(transport.host())
        , workbench(startChild(
              kRole, {QString::number(&transport - transports().data()), host->address()}))
    {
        host->awaitWorkbench();
    }
    /// A workbench ends when its host has gone.
    ~Contestant() { host.reset(); }
    Contestant(const Contestant&) = delete;
    Contestant& operator=(const Contestant&) = delete;

    const char* name;
    std::unique_ptr<HostEnd> host;
    Child workbench;
};

void inboundQuiet(const Contestant& contestant, int count, Figures& figures)
{
    ask(contestant.workbench, "receive " + std::to_string(count));
    for (int i = 0; i < count; ++i) {
        contestant.host->request(linkOf(nowNs()));
        std::this_thread::sleep_for(kQuietGap);
    }
    const std::vector<double> answer = numbersIn(answerOf(contestant.workbench));
    figures.add("inbound quiet", 0, contestant.name, kMicroseconds,
                {answer.begin() + 2, answer.end()});
}

void inboundFlood(const Contestant& contestant, int count, Figures& figures)
{
    ask(contestant.workbench, "receive " + std::to_string(count));
    const std::string link = linkOf(nowNs());
    const double before = processorTimeUs();
    contestant.host->flood(link, count);
    const std::vector<double> answer = numbersIn(answerOf(contestant.workbench));
    figures.add("inbound flood", 0, contestant.name, kHostProcessorTime,
                {(processorTimeUs() - before) / count});
    figures.add("inbound flood", 0, contestant.name, kPerSecond, {answer[0]});
    figures.add("inbound flood", 0, contestant.name, kProcessorTime, {answer[1]});
}

void outboundQuiet(const Contestant& contestant, int count, Figures& figures)
{
    contestant.workbench->say("quiet " + std::to_string(count));
    std::vector<double> latencies;
    for (int i = 0; i < count; ++i) {
        const std::string link = contestant.host->nextLink();
        latencies.push_back(static_cast<double>(nowNs() - momentIn(link)) / kNsPerUs);
    }
    answerOf(contestant.workbench);
    figures.add("outbound quiet", 0, contestant.name, kMicroseconds, latencies);
}

void outboundFlood(const Contestant& contestant, int count, Figures& figures)
{
    contestant.workbench->say("send " + std::to_string(count));
    contestant.host->nextLink();
    const double before = processorTimeUs();
    const std::int64_t first = nowNs();
    for (int i = 1; i < count; ++i)
        contestant.host->nextLink();
    const auto duration = static_cast<double>(nowNs() - first);
    figures.add("outbound flood", 0, contestant.name, kHostProcessorTime,
                {(processorTimeUs() - before) / count});
    answerOf(contestant.workbench);
    const std::vector<double> used = numbersIn(ask(contestant.workbench, "used"));
    figures.add("outbound flood", 0, contestant.name, kPerSecond, {1e9 * (count - 1) / duration});
    figures.add("outbound flood", 0, contestant.name, kProcessorTime, {used[0] / count});
}

} // namespace

void measureMessages(const Effort& effort, Figures& figures)
{
    for (int round = 0; round < effort.rounds; ++round) {
        for (const Transport& transport : transports()) {
            const Contestant contestant(transport);
            Figures ofWarmingUp;
            inboundFlood(contestant, effort.floodMessages / 8, ofWarmingUp);
            outboundFlood(contestant, effort.floodMessages / 8, ofWarmingUp);
            inboundQuiet(contestant, effort.quietMessages, figures);
            inboundFlood(contestant, effort.floodMessages, figures);
            outboundQuiet(contestant, effort.quietMessages, figures);
            outboundFlood(contestant, effort.floodMessages, figures);
        }
    }
}
