// A workbench that is killed in every state, seen by its host and by the other workbenches.

#include "ipc/KTChannelManager.h"
#include "platform/HostPipe.h"
#include "tests/process/SegmentGateMember.h"
#include "tests/support/AccountsFixture.h"
#include "tests/support/ChannelFixture.h"
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
    /// `arguments`: the installation, the pin, the command line.
    explicit Life(const QStringList& arguments)
        : m_pin(arguments[1].toStdString())
        , m_commandLine(arguments[2])
    {
        QCoreApplication::setApplicationName(arguments[0]);
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
    bool leave()
    {
        m_application.reset();
        return true;
    }

private:
    int m_argumentCount = 0;
    std::unique_ptr<QCoreApplication> m_application =
        std::make_unique<QCoreApplication>(m_argumentCount, nullptr);
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
                           {"switch", &Life::switchAway}, {"quit", &Life::quit},
                           {"leave", &Life::leave}};

/// A workbench with a whole life, unless it is stopped in the step of that name, where that text is
/// logged.
const Role kWorkbench("workbench", [](const QStringList& arguments) {
    Life life(arguments);
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

/// A workbench that is told to connect to a pipe that another one has.
const Role kLatecomer("latecomer", [](const QStringList& arguments) {
    int count = 0;
    const QCoreApplication application(count, nullptr);
    QCoreApplication::setApplicationName(arguments[0]);
    KTChannelManager::sharedInstance()->startUp(arguments[2], nullptr, nullptr);
    sayToParent(waitUntil([] { return KTChannelManagerProbe::readerWaitsForItsTurn(); })
                    ? "waiting"
                    : "not waiting");
    nextLineFromParent();
    return 0;
});

/// The host of one workbench, which says something before there is a main window, or nothing.
class Host
{
public:
    explicit Host(QByteArray firstMessage = kConversation)
        : m_firstMessage(std::move(firstMessage))
    {
    }

    [[nodiscard]] QString commandLine() const
    {
        return QStringLiteral("pipe?param=") + m_in.fullName() + QLatin1Char('&') +
               m_out.fullName();
    }
    [[nodiscard]] bool waitForClients() const
    {
        return m_thread.waitForEnd() && m_out.waitForClient();
    }
    /// Whether it has learned by its reading that its workbench is gone.
    [[nodiscard]] bool waitForEnd() const { return m_out.waitForEnd(); }
    /// The same by writing.
    [[nodiscard]] bool waitUntilNothingCanBeWritten()
    {
        return m_thread.waitForEnd() && waitUntil([this] { return !m_in.write(kConversation); });
    }

private:
    inline static const QByteArray kConversation =
        frame(R"({"name":"OpenLXWindow","arguments":["buyer",3,"order"]})");

    const QByteArray m_firstMessage;
    pavo::HostPipe m_in{uniquePipeName(), pavo::HostPipe::Direction::HostWrites};
    HostReader m_out{uniquePipeName()};
    PipeThread m_thread{[this] {
        if (m_in.awaitClient() && !m_firstMessage.isEmpty())
            m_in.write(m_firstMessage);
    }};
};

/// The pipes that a workbench is sure to have open.
enum class Connected { No, Reader, Both };

struct Place
{
    const char* name;
    const char* step;
    const char* text; ///< that is logged there
    Connected connected;
    bool isListed;
};

constexpr Place kPlaces[] = {
    {"BeforeThePipes", "start", "parse cmd line ", Connected::No, false},
    {"BeforeTheReaderOpens", "start", "init reader ", Connected::No, false},
    {"BeforeTheWriterOpens", "start", "init writer ", Connected::No, false},
    {"WithItsFirstMessage", "start", "not initialized completed, ", Connected::Reader, false},
    {"Joining", "join", "init ma manager, ", Connected::Both, false},
    {"Joined", "join", "multi account init success, ", Connected::Both, true},
    {"BeforeTheMainWindow", "enter", "KTChannelManager::enterMainUI enter", Connected::Both, true},
    {"InTheReplay", "enter", "in the replay", Connected::Both, true},
    {"InTheMainWindow", "enter", "KTChannelManager::enterMainUI leave", Connected::Both, true},
    {"ShowingItself", "show", "switch to account, ", Connected::Both, true},
    {"SwitchingBetweenWriteAndPost", "switch", "post process message, ", Connected::Both, true},
    {"QuittingBetweenWriteAndPost", "quit", "post process message, ", Connected::Both, false},
    {"Leaving", "leave", "NamedPipe::closePipe enter", Connected::Both, false},
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

    static QStringList life(const char* pin, const Host& host)
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

        Host host;
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
    Host host;
    RoleProcess victim("workbench", life("victim", host) << QString::fromLatin1(place.step)
                                                         << QString::fromLatin1(place.text));
    ASSERT_EQ(victim.nextLine(), "stopped");
    victim.kill();
    if (place.connected == Connected::Both) {
        EXPECT_TRUE(host.waitForEnd()) << "its host learns of it";
    }
    if (place.connected != Connected::No) {
        EXPECT_TRUE(host.waitUntilNothingCanBeWritten()) << "its host learns of it";
    }
    expectThatLifeGoesOn(place.isListed);
}

INSTANTIATE_TEST_SUITE_P(Places, WorkbenchDeathPlaceTest, testing::ValuesIn(kPlaces), nameOf);

TEST_F(WorkbenchDeathTest, ConnectedBeforeItHasReadAnything)
{
    Host host{QByteArray()};
    RoleProcess victim("workbench", life("victim", host));
    ASSERT_TRUE(host.waitForClients());
    victim.kill();
    EXPECT_TRUE(host.waitForEnd()) << "its host learns of it";
    EXPECT_TRUE(host.waitUntilNothingCanBeWritten()) << "from either pipe";
    expectThatLifeGoesOn(false);
}

TEST_P(WorkbenchDeathAtTheLockTest, DisturbsNobody)
{
    const Place& place = GetParam();
    Host host;
    RoleProcess victim("workbench", life("victim", host) << QString::fromLatin1(place.step)
                                                         << QString::fromLatin1(place.text));
    ASSERT_EQ(victim.nextLine(), "stopped");
    // Taken as by a program without a gate: whoever wants it waits in the gate.
    ASSERT_TRUE(view()->lock());
    victim.say("go on");
    EXPECT_TRUE(waitUntil([this] { return isLockAwaited(view()->key()); }));
    victim.kill();
    EXPECT_TRUE(view()->unlock());
    expectThatLifeGoesOn(place.isListed);
}

INSTANTIATE_TEST_SUITE_P(
    Places, WorkbenchDeathAtTheLockTest,
    testing::Values(Place{"Starting", "start", "parse cmd line ", Connected::No, false},
                    Place{"Joining", "join", "init ma manager, ", Connected::Both, false},
                    Place{"Switching", "show", "switch to account, ", Connected::Both, true},
                    Place{"Quitting", "switch", "post process message, ", Connected::Both, true}),
    nameOf);

TEST_F(WorkbenchDeathTest, WhileItWaitsForABusyPipe)
{
    Host host;
    RoleProcess first("workbench", life("victim", host)
                                       << QStringLiteral("enter")
                                       << QStringLiteral("KTChannelManager::enterMainUI leave"));
    ASSERT_EQ(first.nextLine(), "stopped");
    RoleProcess waiting("latecomer", life("waiting", host));
    ASSERT_EQ(waiting.nextLine(), "waiting");
    waiting.kill();
    EXPECT_EQ(m_survivor.loginAccountCount(), 2);
    first.kill();
    EXPECT_TRUE(host.waitForEnd());
    expectThatLifeGoesOn(true);
}
