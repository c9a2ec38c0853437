// What happens to hosts and workbenches in the middle of their work.

#include "tests/soak/Soak.h"
#include "tests/soak/SoakWorkbench.h"

#include <QCoreApplication>

namespace {

/// The host that crashes.
constexpr std::size_t kCrashing = 1;

} // namespace

void Soak::happen()
{
    for (Seat& seat : m_seats)
        happenTo(seat);
    // For certain in the first round: a short run may come to no other crash.
    if (m_counts["rounds"] == 0 || chance(0.05))
        crashHost();
}

void Soak::happenTo(Seat& seat)
{
    struct Event
    {
        double probability;
        bool isPossible;
        void (Soak::*happen)(Seat& seat);
    };
    const bool isMortal = seat.number >= kLongLived;
    const double reopening = seat.number > 0 ? 0.1 : 0;
    const Event events[] = {
        {0.3, !seat.isAlive() && seat.isListed, &Soak::removeCrashed},
        {0.5, !seat.isAlive(), &Soak::launch},
        {0.5, seat.isAlive() && !seat.isListed, &Soak::join},
        {0.15, seat.isAlive() && isMortal, &Soak::kill},
        {0.1, seat.isJoined() && isMortal, &Soak::quit},
        {0.05, seat.isJoined() && isMortal, &Soak::leave},
        {reopening, seat.isAlive(), &Soak::reopenPipes},
    };
    for (const Event& event : events) {
        if (event.isPossible && chance(event.probability)) {
            (this->*event.happen)(seat);
            return;
        }
    }
}

std::unique_ptr<SoakProcess> Soak::newHost(const std::string& name)
{
    return std::make_unique<SoakProcess>(name, "host", QStringList{QString::number(m_random())});
}

/// In the middle of whatever it does. Its workbenches learn it: some leave, the others start up
/// with the host that comes in its place, which also launches new ones.
void Soak::crashHost()
{
    auto& host = m_hosts[kCrashing];
    m_received += host->ask("received");
    host->kill();
    for (Seat* seat : seatsThat(&Seat::isAlive)) {
        if (hostNumberOf(*seat) == kCrashing)
            seat->process->expect("closed", "closed");
    }
    host = newHost("host2");
    host->expect("work", "working");
    for (Seat& seat : m_seats) {
        if (hostNumberOf(seat) != kCrashing)
            continue;
        if (seat.isAlive() && seat.number >= kLongLived && chance(0.5))
            leave(seat);
        if (seat.isAlive())
            openPipes(seat);
        else
            launch(seat);
    }
    ++m_counts["hosts crashed"];
}

void Soak::launch(Seat& seat)
{
    seat.process = std::make_unique<SoakProcess>(
        seat.name, "workbench",
        QStringList{QCoreApplication::applicationName(), QString::number(seat.number),
                    QString::number(kSeats), QString::number(m_random())});
    seat.process->expectAnswer("ready");
    openPipes(seat);
    join(seat);
    seat.process->expect("work", "working");
    ++m_counts["launches"];
}

void Soak::openPipes(Seat& seat)
{
    const std::string argument = hostOf(seat).ask("open " + std::to_string(seat.number));
    seat.bursts = 0;
    seat.process->expect("start " + argument, "started");
    ++seat.starts;
}

void Soak::reopenPipes(Seat& seat)
{
    const std::string number = std::to_string(seat.number);
    if (chance(0.5))
        hostOf(seat).expect("garbage " + number, "garbage");
    else
        hostOf(seat).expect("close " + number, "closed");
    seat.process->expect("closed", "closed");
    openPipes(seat);
    ++m_counts["pipes reopened"];
}

void Soak::join(Seat& seat)
{
    seat.process->expect("join", "joined");
    seat.isListed = true;
    ++m_counts["joins"];
}

void Soak::quit(Seat& seat)
{
    seat.process->expect("quit", "quit");
    seat.isListed = false;
    ++m_counts["quits"];
}

void Soak::leave(Seat& seat)
{
    if (seat.isListed)
        quit(seat);
    seat.process->expect("leave", "leaving");
    seat.process->expectEnd();
    seat.process.reset();
}

/// In the middle of whatever it does. Its record stays.
void Soak::kill(Seat& seat)
{
    seat.process->kill();
    seat.process.reset();
    ++m_counts["kills"];
}

void Soak::removeCrashed(Seat& seat)
{
    QString problem;
    if (!m_store.remove(SoakAccount::kAppID, SoakAccount(seat.number).pin, problem))
        throw SoakFailure("cannot remove " + seat.name + ": " + problem.toStdString());
    seat.isListed = false;
    ++m_counts["crashed accounts removed"];
}
