#pragma once

#include "tests/soak/GrowthJudge.h"
#include "tests/soak/Seat.h"
#include "tools/pavo-accounts/Store.h"

#include <QElapsedTimer>
#include <QString>

#include <array>
#include <fstream>
#include <functional>
#include <random>

/// Runs the hosts and the workbenches. Round by round they work, and while they do, something
/// happens to some of them; then they come to rest, and everything is compared with what it has to
/// be. Any function fails with a SoakFailure.
class Soak
{
public:
    static constexpr int kSeats = 8;
    /// The first seats are never killed, so that what grows has the time to; the very first one
    /// keeps its pipes, too.
    static constexpr int kLongLived = 3;

    Soak(unsigned seed, double seconds, const std::string& csvFile);

    enum class Verdict { Flat, Grows, TooShortToTell };

    Verdict run();

private:
    void work();
    void pause();
    void happen();
    void happenTo(Seat& seat);
    void crashHost();
    std::unique_ptr<SoakProcess> newHost(const std::string& name);
    void launch(Seat& seat);
    void openPipes(Seat& seat);
    void reopenPipes(Seat& seat);
    void join(Seat& seat);
    void quit(Seat& seat);
    void leave(Seat& seat);
    void kill(Seat& seat);
    void removeCrashed(Seat& seat);

    void comeToRest();
    void settle();
    void passMarks();
    void switchAround();
    void switchTo(Seat& seat, Seat& from);
    void checkStore(const Seat& front, const std::string& when);
    void sample();
    void tellProgress();
    void finish();

    [[nodiscard]] std::vector<Seat*> seatsThat(bool (Seat::*condition)() const);
    SoakProcess& hostOf(const Seat& seat) { return *m_hosts[hostNumberOf(seat)]; }
    static std::size_t hostNumberOf(const Seat& seat);
    void askHosts(const std::string& command, const std::string& expected);
    void askAll(const std::string& command, const std::string& expected);
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }
    int any(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }
    [[nodiscard]] double seconds() const { return static_cast<double>(m_time.elapsed()) / 1000; }

    std::mt19937 m_random;
    const double m_seconds;
    std::ofstream m_csv;
    QElapsedTimer m_time;
    double m_nextTold = 0;
    GrowthJudge m_judge;
    const Store m_store;
    /// The first one lives through the run, the second one crashes; each has every other seat.
    std::array<std::unique_ptr<SoakProcess>, 2> m_hosts;
    std::string m_received; ///< By the hosts that crashed.
    std::vector<Seat> m_seats;
    int m_mode = 1;

    std::map<std::string, long long> m_counts; ///< Of what has happened, for the people who watch.
};
