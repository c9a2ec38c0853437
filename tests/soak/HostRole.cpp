// The host of all workbenches, on the command of the soak.

#include "tests/soak/HostLink.h"
#include "tests/soak/Resources.h"
#include "tests/support/RoleProcess.h"

#include <functional>
#include <memory>
#include <sstream>

namespace {

class HostProcess
{
public:
    explicit HostProcess(unsigned seed)
        : m_random(seed)
    {
    }

    int run()
    {
        std::string line;
        while (!(line = nextLineFromParent()).empty()) {
            std::istringstream words(line);
            std::string command;
            words >> command;
            sayToParent(answer(command, words));
        }
        return 0;
    }

private:
    std::string answer(const std::string& command, std::istringstream& words)
    {
        int seat = 0;
        words >> seat;
        if (command == "open") {
            end(seat);
            m_links[seat] = std::make_unique<HostLink>(m_random(), m_isWorking);
            return m_links[seat]->argument().toStdString();
        }
        if (command == "close") {
            end(seat);
            return "closed";
        }
        if (command == "work") {
            m_isWorking = true;
            for (const auto& [number, link] : m_links)
                link->work();
            return "working";
        }
        if (command == "rest")
            return rest();
        if (command == "sample")
            return ownResources();
        if (command == "received")
            return received();
        HostLink& link = *m_links.at(seat);
        if (command == "sent")
            return link.sent();
        if (command == "garbage") {
            link.sendGarbage();
            return "garbage";
        }
        long long count = 0;
        words >> count;
        const std::string problem = link.await(count);
        return problem.empty() ? "received" : problem;
    }

    std::string rest()
    {
        m_isWorking = false;
        for (const auto& [number, link] : m_links) {
            if (!link->rest())
                return "still writing to workbench " + std::to_string(number);
        }
        return "resting";
    }

    void end(int seat)
    {
        const auto link = m_links.find(seat);
        if (link == m_links.end())
            return;
        for (const auto& [name, count] : link->second->received())
            m_ended[name] += count;
        m_links.erase(link);
    }

    std::string received()
    {
        auto total = m_ended;
        for (const auto& [number, link] : m_links) {
            for (const auto& [name, count] : link->received())
                total[name] += count;
        }
        std::string text;
        for (const auto& [name, count] : total)
            text += name + ' ' + std::to_string(count) + ' ';
        return text;
    }

    std::mt19937 m_random;
    bool m_isWorking = false;
    std::map<int, std::unique_ptr<HostLink>> m_links;
    std::map<std::string, long long> m_ended; ///< What links that are no more have received.
};

const Role kHostRole("host", [](const QStringList& arguments) {
    return HostProcess(arguments[0].toUInt()).run();
});

} // namespace
