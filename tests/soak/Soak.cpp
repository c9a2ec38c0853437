#include "tests/soak/Soak.h"

#include "ipc/MultiAccount/MACodes.h"
#include "tests/soak/SoakWorkbench.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <sstream>
#include <utility>

namespace {

constexpr unsigned long kPauseMs = 800;
constexpr double kTellEverySeconds = 60;
/// In less time a process does not even warm up.
constexpr double kShortestJudgedSeconds = 120;
/// A window message leads to others: so many marks later nothing is under way any more.
constexpr int kMarks = 4;

constexpr const char* kOutbound[] = {"ActivePlatform",        "BaseInfoChanged",
                                     "ChangeLoginInitStatus", "ChangeSkin",
                                     "ChangeStatusCallback",  "OpenPlugin",
                                     "OpenSetting",           "OpenUrl",
                                     "ShowMessageBox",        "StartupCompleted",
                                     "TrayIconAction",        "UnreadMessageChanged",
                                     "UploadCefException",    "UploadInterfaceException"};

std::vector<long long> numbersIn(const std::string& text)
{
    std::istringstream words(text);
    return {std::istream_iterator<long long>(words), {}};
}

std::map<std::string, std::size_t> judgedProcesses()
{
    // The host is not asked for latencies: the workbenches measure them.
    std::map<std::string, std::size_t> processes{{"host", 4}};
    for (int number = 0; number < Soak::kLongLived; ++number)
        processes[Seat(number).name] = GrowthJudge::kQuantities.size();
    return processes;
}

} // namespace

Soak::Soak(unsigned seed, double seconds, const std::string& csvFile)
    : m_random(seed)
    , m_seconds(seconds)
    , m_csv(csvFile)
    , m_judge(judgedProcesses())
    , m_store(QCoreApplication::applicationName())
    , m_hosts{newHost("host"), newHost("host2")}
{
    for (int number = 0; number < kSeats; ++number)
        m_seats.emplace_back(number);
    if (!csvFile.empty() && !m_csv)
        throw SoakFailure("cannot write " + csvFile);
    m_csv << "seconds,process,resident_kib,heap_kib,handles,threads,inbound,inbound_median_us,"
             "inbound_p99_us,inbound_max_us,switch_us,starts\n";
}

Soak::Verdict Soak::run()
{
    for (Seat& seat : m_seats)
        launch(seat);
    m_time.start();
    while (seconds() < m_seconds) {
        work();
        pause();
        happen();
        pause();
        comeToRest();
        settle();
        switchAround();
        sample();
        ++m_counts["rounds"];
        if (seconds() >= m_nextTold)
            tellProgress();
    }
    tellProgress();
    finish();
    if (m_seconds < kShortestJudgedSeconds)
        return Verdict::TooShortToTell;
    std::ostringstream report;
    const bool isFlat = m_judge.isFlat(m_seconds, report);
    std::fputs(report.str().c_str(), stdout);
    return isFlat ? Verdict::Flat : Verdict::Grows;
}

std::vector<Seat*> Soak::seatsThat(bool (Seat::*condition)() const)
{
    std::vector<Seat*> found;
    for (Seat& seat : m_seats) {
        if ((seat.*condition)())
            found.push_back(&seat);
    }
    return found;
}

std::size_t Soak::hostNumberOf(const Seat& seat)
{
    return static_cast<std::size_t>(seat.number % 2);
}

void Soak::askHosts(const std::string& command, const std::string& expected)
{
    for (const auto& host : m_hosts)
        host->expect(command, expected);
}

/// All of them at once: together they are quicker.
void Soak::askAll(const std::string& command, const std::string& expected)
{
    const auto alive = seatsThat(&Seat::isAlive);
    for (Seat* seat : alive)
        seat->process->say(command);
    for (Seat* seat : alive)
        seat->process->expectAnswer(expected);
}

void Soak::work()
{
    askHosts("work", "working");
    askAll("work", "working");
}

/// The time in which work is done, and in which some of them are hit in the middle of it.
void Soak::pause()
{
    QThread::msleep(kPauseMs);
}

/// Until everything that was sent has arrived and led to what it has to lead to.
void Soak::comeToRest()
{
    askAll("rest", "resting");
    askHosts("rest", "resting");
    const auto alive = seatsThat(&Seat::isAlive);
    for (Seat* seat : alive) {
        const std::string sent = hostOf(*seat).ask("sent " + std::to_string(seat->number));
        seat->process->expect("drain " + sent, "drained");
        const long long bursts = numbersIn(sent).at(0);
        m_counts["bursts of the host"] += bursts - std::exchange(seat->bursts, bursts);
    }
    passMarks();
    for (Seat* seat : alive) {
        const std::string sent = seat->process->ask("sent");
        hostOf(*seat).expect("await " + std::to_string(seat->number) + ' ' + sent, "received");
    }
}

void Soak::passMarks()
{
    for (int i = 0; i < kMarks; ++i)
        askAll("mark", "marked");
}

/// Has every workbench set values that nothing changes until the next round.
void Soak::settle()
{
    const auto joined = seatsThat(&Seat::isJoined);
    for (Seat* seat : joined) {
        seat->unread = any(1000);
        seat->skin = any(6);
        seat->loginState = any(5);
        seat->process->expect("settle " + std::to_string(seat->unread) + ' ' +
                                  std::to_string(seat->skin) + ' ' +
                                  std::to_string(seat->loginState),
                              "settled");
    }
    m_mode = chance(0.85) ? kMAMerged : kMASeparate;
    joined[m_random() % joined.size()]->process->expect("merge " + std::to_string(m_mode),
                                                        "merged");
    passMarks();
}

/// Brings each account to the front once: in merged mode from the one in front before.
void Soak::switchAround()
{
    auto joined = seatsThat(&Seat::isJoined);
    std::shuffle(joined.begin(), joined.end(), m_random);
    joined.front()->process->expect("front", "switched");
    passMarks();
    checkStore(*joined.front(), "after taking the front");
    for (std::size_t i = 1; i < joined.size() && m_mode == kMAMerged; ++i) {
        switchTo(*joined[i], *joined[i - 1]);
        ++m_counts["switches measured"];
    }
    if (m_mode == kMAMerged) {
        passMarks();
        checkStore(*joined.back(), "after switching");
    }
}

void Soak::switchTo(Seat& seat, Seat& from)
{
    seat.process->expect("await-front", "waiting");
    const std::string begin = from.process->ask("switch " + std::to_string(seat.number));
    const std::string end = seat.process->answer();
    std::istringstream words(begin + ' ' + end);
    std::string word;
    long long times[2] = {};
    words >> word >> times[0] >> word >> times[1];
    if (!words || word != "front")
        throw SoakFailure("switching from " + from.name + " to " + seat.name + ": " + begin + ", " +
                          end);
    seat.switchUs = times[1] - times[0];
}

void Soak::checkStore(const Seat& front, const std::string& when)
{
    Store::Content content;
    QString problem;
    if (!m_store.look(content, problem))
        throw SoakFailure("cannot read the accounts: " + problem.toStdString());
    const auto verify = [&](bool isAsItShouldBe, const std::string& what) {
        if (!isAsItShouldBe)
            throw SoakFailure(what + ' ' + when + "; the accounts are " +
                              MAAccountInfo::toJSON(content.accounts) + ", selected is " +
                              content.selected.toJSON());
    };
    const SoakAccount inFront(front.number);
    verify(content.selected.mode == m_mode, "the mode is not " + std::to_string(m_mode));
    verify(content.selected.pin == inFront.pin && content.selected.title == inFront.title &&
               content.selected.appID == SoakAccount::kAppID &&
               content.selected.className == SoakAccount::kClassName,
           front.name + " is not selected");
    verify(windowPresence(SoakAccount::kClassName, inFront.title) == WindowPresence::Visible,
           "the window of " + front.name + " is not visible");
    std::size_t listed = 0;
    for (const Seat& seat : m_seats) {
        listed += seat.isListed ? 1 : 0;
        const SoakAccount account(seat.number);
        const auto isIt = [&](const MAAccountInfo& record) {
            return record.equalAccount(SoakAccount::kAppID, account.pin);
        };
        const auto record = std::find_if(content.accounts.begin(), content.accounts.end(), isIt);
        verify((record != content.accounts.end()) == seat.isListed,
               seat.name + (seat.isListed ? " is missing" : " is still listed"));
        if (!seat.isJoined())
            continue;
        verify(record->title == account.title && record->className == SoakAccount::kClassName,
               seat.name + " has another window");
        verify(record->unread == seat.unread && record->skin == seat.skin &&
                   record->loginState == seat.loginState,
               seat.name + " has other values than " + std::to_string(seat.unread) + ' ' +
                   std::to_string(seat.skin) + ' ' + std::to_string(seat.loginState));
    }
    verify(content.accounts.size() == listed, "an account is listed twice");
    ++m_counts["looks at the store"];
}

void Soak::sample()
{
    const double now = seconds();
    const auto write = [&](const std::string& process, std::vector<long long> values) {
        m_csv << now << ',' << process;
        for (const long long value : values)
            m_csv << ',' << (value == GrowthJudge::kNone ? std::string() : std::to_string(value));
        m_csv << '\n';
    };
    constexpr long long kNone = GrowthJudge::kNone;
    for (const auto& host : m_hosts) {
        auto values = numbersIn(host->ask("sample"));
        m_judge.add(host->name(), now, values);
        values.resize(10, kNone);
        write(host->name(), values);
    }
    for (Seat* seat : seatsThat(&Seat::isAlive)) {
        auto values = numbersIn(seat->process->ask("sample"));
        const long long switchUs = std::exchange(seat->switchUs, kNone);
        m_judge.add(
            seat->name, now,
            {values.at(0), values.at(1), values.at(2), values.at(3), values.at(5), switchUs});
        values.push_back(switchUs);
        values.push_back(seat->starts);
        write(seat->name, values);
    }
    m_csv.flush();
}

void Soak::tellProgress()
{
    m_nextTold = seconds() + kTellEverySeconds;
    std::printf("%5.0f s:", seconds());
    for (const auto& [what, count] : m_counts)
        std::printf(" %lld %s,", count, what.c_str());
    std::printf(" all well\n");
    std::fflush(stdout);
}

/// Everybody goes properly, and nothing is left.
void Soak::finish()
{
    for (const auto& host : m_hosts)
        m_received += host->ask("received");
    for (const char* name : kOutbound) {
        if (m_received.find(std::string(name) + ' ') == std::string::npos)
            throw SoakFailure(std::string("the host never got ") + name);
    }
    for (Seat& seat : m_seats) {
        if (seat.isAlive())
            leave(seat);
    }
    Store::Content content;
    QString problem;
    if (!m_store.look(content, problem) || !content.accounts.empty())
        throw SoakFailure("accounts are left when everybody has left");
}
