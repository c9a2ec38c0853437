// A workbench that is killed in every state, seen by its host and by the other workbenches.

#include "ipc/KTChannelManager.h"
#include "platform/HostPipe.h"
#include "tests/process/SegmentGateMember.h"
#include "tests/support/AccountsFixture.h"
#include "tests/support/Host.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include "pavo_base/Logger.h"

#include <log4cplus/appender.h>
#include <log4cplus/loggingmacros.h>
#include <log4cplus/spi/loggingevent.h>

#include <QElapsedTimer>

#include <algorithm>
#include <iterator>

namespace {

/// How long the others may be held up.
constexpr int kRecoveryMs = 5000;

/// Says "stopped" and waits to be told to go on, in the middle of whatever logs a text that begins
/// so.
class Stop : public log4cplus::Appender
{
public:
    explicit Stop(std::string beginning)
        : m_beginning(std::move(beginning))
    {
    }
    ~Stop() override { destructorImpl(); }

    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        if (event.getMessage().rfind(m_beginning, 0) != 0)
            return;
        sayToParent("stopped");
        nextLineFromParent();
    }

private:
    const std::string m_beginning;
};

/// What a workbench does in its life, step by step. The names are those of the steps.
class Life
{
public:
    Life(std::string pin, QString commandLine)
        : m_pin(std::move(pin))
        , m_commandLine(std::move(commandLine))
    {
    }

    /// Up to the host's first message, which is parked, with both pipes in use.
    bool start()
    {
        KTChannelManager& channel = *KTChannelManager::sharedInstance();
        const bool isStarted = channel.startUp(m_commandLine, nullptr, nullptr);
        channel.activePlatform();
        return isStarted && waitUntil([this] {
                   return m_log.countBeginning("write data ") == 1 &&
                          m_log.countBeginning("not initialized completed, ") == 1;
               });
    }
    bool join() { return m_manager->initManager("app", m_pin, "class", "title " + m_pin, 1); }
    /// With the replay of what was parked.
    bool enter()
    {
        bool isReplayed = false;
        auto* observer = new KTChannelObserver;
        observer->onOpenLXWindow = [&isReplayed](int, const std::string&, const std::string&) {
            LOG4CPLUS_DEBUG(Logger::logger(), "in the replay");
            isReplayed = true;
        };
        KTChannelManager::sharedInstance()->enterMainUI(0, observer);
        observer->onOpenLXWindow = nullptr;
        return isReplayed;
    }
    bool show() { return m_manager->switchToCurrentPin(); }
    bool switchAway()
    {
        MAAccountInfo neighbour;
        neighbour.setAccount("app", "survivor", "class survivor", "title survivor", 1, 0);
        return m_manager->switchToAccount(neighbour);
    }
    bool quit() { return m_manager->quitCurrentAccount() == 1; }

private:
    const std::string m_pin;
    const QString m_commandLine;
    const LogRecorder m_log;
    const std::shared_ptr<MAManager> m_manager = MAManager::Instance();
};

struct Step
{
    const char* name;
    bool (Life::*run)();
};

constexpr Step kSteps[] = {{"start", &Life::start},       {"join", &Life::join},
                           {"enter", &Life::enter},       {"show", &Life::show},
                           {"switch", &Life::switchAway}, {"quit", &Life::quit}};

/// A workbench with a whole life, unless it is stopped in the step of that name, where that text is
/// logged.
const Role kWorkbench("workbench", [](const QStringList& arguments) {
    int count = 0;
    const QCoreApplication application(count, nullptr);
    QCoreApplication::setApplicationName(arguments[0]);
    Life life(arguments[1].toStdString(), arguments[2]);
    int failed = 0;
    for (const Step& step : kSteps) {
        if (arguments.value(3) == QLatin1String(step.name))
            Logger::logger().addAppender(
                log4cplus::SharedAppenderPtr(new Stop(arguments[4].toStdString())));
        if (!(life.*step.run)())
            ++failed;
    }
    sayToParent(std::to_string(failed));
    return failed;
});

/// The host of one workbench, which opens a conversation before there is a main window.
class ConversingHost
{
public:
    [[nodiscard]] QString commandLine() const
    {
        return QStringLiteral("pipe?param=") + m_in.fullName() + QLatin1Char('&') +
               m_out.fullName();
    }
    [[nodiscard]] bool waitForClient() const { return m_out.waitForClient(); }
    /// Whether it has learned that its workbench is gone.
    [[nodiscard]] bool waitForEnd() const { return m_out.waitForEnd(); }

private:
    pavo::HostPipe m_in{uniquePipeName(), pavo::HostPipe::Direction::HostWrites};
    HostReader m_out{uniquePipeName()};
    PipeThread m_thread{[this] {
        if (m_in.awaitClient())
            m_in.write(frame(R"({"name":"OpenLXWindow","arguments":["buyer",3,"order"]})"));
    }};
};

struct Place
{
    const char* name;
    const char* step;
    const char* text; ///< that is logged there
    bool isConnected;
    bool isListed;
};

constexpr Place kPlaces[] = {
    {"BeforeThePipes", "start", "parse cmd line ", false, false},
    {"BeforeTheReaderOpens", "start", "init reader ", false, false},
    {"BeforeTheWriterOpens", "start", "init writer ", false, false},
    {"Connected", "start", "not initialized completed, ", false, false},
    {"Joining", "join", "init ma manager, ", true, false},
    {"Joined", "join", "multi account init success, ", true, true},
    {"BeforeTheMainWindow", "enter", "KTChannelManager::enterMainUI enter", true, true},
    {"InTheReplay", "enter", "in the replay", true, true},
    {"InTheMainWindow", "enter", "KTChannelManager::enterMainUI leave", true, true},
    {"ShowingItself", "show", "switch to account, ", true, true},
    {"SwitchingBetweenWriteAndPost", "switch", "post process message, ", true, true},
    {"QuittingBetweenWriteAndPost", "quit", "post process message, ", true, false},
};

void PrintTo(const Place& place, std::ostream* out)
{
    *out << place.name;
}

std::string nameOf(const testing::TestParamInfo<Place>& place)
{
    return place.param.name;
}

class WorkbenchDeathTest : public AccountsFixture
{
protected:
    WorkbenchDeathTest() { EXPECT_TRUE(m_survivor.join("survivor")); }

    static QStringList life(const char* pin, const ConversingHost& host)
    {
        return {QCoreApplication::applicationName(), QString::fromLatin1(pin), host.commandLine()};
    }

    /// The survivor has the accounts to itself again, at once, and the next workbench has a life of
    /// its own.
    void expectThatLifeGoesOn(bool isVictimListed)
    {
        QElapsedTimer timer;
        timer.start();
        m_survivor.changeLoginState(m_survivor.own().loginState + 1);
        EXPECT_EQ(m_survivor.loginAccountCount(), isVictimListed ? 2 : 1);
        EXPECT_TRUE(m_survivor.switchToCurrentPin());
        EXPECT_EQ(m_survivor.selected().pin, "survivor");
        EXPECT_LT(timer.elapsed(), kRecoveryMs);
        EXPECT_EQ(lockValue(view()->key()), 1);

        const ConversingHost host;
        RoleProcess next("workbench", life("victim", host));
        EXPECT_EQ(next.nextLine(), "0") << "steps of its life have failed";
        EXPECT_EQ(next.waitForExit(), 0);
        EXPECT_TRUE(host.waitForEnd());
        EXPECT_EQ(m_survivor.loginAccountCount(), 1) << "the next one has taken the place";
    }

    MAManagerProbe m_survivor;
};

class WorkbenchDeathPlaceTest : public WorkbenchDeathTest, public testing::WithParamInterface<Place>
{
};

/// From where a workbench comes to the lock.
class WorkbenchDeathAtTheLockTest : public WorkbenchDeathPlaceTest
{
};

} // namespace

TEST_P(WorkbenchDeathPlaceTest, DisturbsNobody)
{
    const Place& place = GetParam();
    const ConversingHost host;
    RoleProcess victim("workbench", life("victim", host) << QString::fromLatin1(place.step)
                                                         << QString::fromLatin1(place.text));
    ASSERT_EQ(victim.nextLine(), "stopped");
    if (place.isConnected) {
        ASSERT_TRUE(host.waitForClient());
    }
    victim.kill();
    if (place.isConnected) {
        EXPECT_TRUE(host.waitForEnd()) << "its host learns of it";
    }
    expectThatLifeGoesOn(place.isListed);
}

INSTANTIATE_TEST_SUITE_P(Places, WorkbenchDeathPlaceTest, testing::ValuesIn(kPlaces), nameOf);

TEST_P(WorkbenchDeathAtTheLockTest, DisturbsNobody)
{
    const Place& place = GetParam();
    const ConversingHost host;
    RoleProcess victim("workbench", life("victim", host) << QString::fromLatin1(place.step)
                                                         << QString::fromLatin1(place.text));
    ASSERT_EQ(victim.nextLine(), "stopped");
    {
        const MAMutex lock(view());
        victim.say("go on");
        // Time to do more than wait, if it could.
        EXPECT_EQ(victim.nextLine(300), "");
        victim.kill();
    }
    expectThatLifeGoesOn(place.isListed);
}

INSTANTIATE_TEST_SUITE_P(
    Places, WorkbenchDeathAtTheLockTest,
    testing::Values(Place{"Starting", "start", "parse cmd line ", false, false},
                    Place{"Joining", "join", "init ma manager, ", true, false},
                    Place{"Switching", "show", "switch to account, ", true, true},
                    Place{"Quitting", "switch", "post process message, ", true, true}),
    nameOf);

TEST_F(WorkbenchDeathTest, WhileItWaitsForABusyPipe)
{
    const ConversingHost host;
    RoleProcess first("workbench", life("victim", host)
                                       << QStringLiteral("enter")
                                       << QStringLiteral("KTChannelManager::enterMainUI leave"));
    ASSERT_EQ(first.nextLine(), "stopped");
    RoleProcess waiting("workbench", life("waiting", host));
    EXPECT_EQ(waiting.nextLine(300), "") << "for its turn";
    waiting.kill();
    EXPECT_EQ(m_survivor.loginAccountCount(), 2);
    first.kill();
    EXPECT_TRUE(host.waitForEnd());
    expectThatLifeGoesOn(true);
}
