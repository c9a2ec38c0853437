// The segment's lock in the hands of a program that takes it and knows nothing of the gate.

#include "tests/process/SegmentGateMember.h"
#include "tests/process/Tool.h"
#include "tests/support/AccountsFixture.h"
#include "tests/support/RoleProcess.h"

#include <QElapsedTimer>
#include <QProcess>

#include <sstream>

namespace {

/// How long a living program keeps the lock, and how soon everybody has gone on afterwards.
constexpr int kHoldMs = 10000;
constexpr int kRecoveryMs = 5000;

#ifdef _WIN32
// The system does not take a lock back from the dead, so a taken one tells nothing.
constexpr bool kLockOutlivesItsHolder = true;
#else
constexpr bool kLockOutlivesItsHolder = false;
#endif

QString segmentKey()
{
    return QCoreApplication::applicationName() + QLatin1String(kMASegmentSuffix);
}

/// Takes the lock as the segment's name and Qt alone allow it, until it is told to give it back.
const Role kStranger("stranger", [](const QStringList& arguments) {
    QSharedMemory memory(arguments[0]);
    sayToParent(memory.attach() && memory.lock() ? "locked" : "failed");
    nextLineFromParent();
    memory.unlock();
    sayToParent("unlocked");
    nextLineFromParent();
    return 0;
});

/// A workbench that answers each command with what came of it and the milliseconds that it took.
const Role kWorkbench("workbench", [](const QStringList& arguments) {
    QCoreApplication::setApplicationName(arguments[0]);
    const std::string pin = arguments[1].toStdString();
    const LogRecorder log;
    MAManagerProbe manager;
    sayToParent("ready");
    std::string command;
    while (!(command = nextLineFromParent()).empty()) {
        QElapsedTimer timer;
        timer.start();
        std::string result = "done";
        if (command == "join") {
            result = manager.join(pin) ? "joined" : "refused";
        } else if (command == "quit") {
            result = std::to_string(manager.quitCurrentAccount());
        } else if (command == "mark") {
            manager.changeLoginState(manager.own().loginState + 1);
        } else if (command == "stay") {
            const MAMutex lock(&manager.memory());
            sayToParent("staying");
            nextLineFromParent();
        } else if (command == "mark after a stop in the gate") {
            const pavo::SegmentGate gate(manager.memory());
            sayToParent("stopped");
            nextLineFromParent();
            manager.changeLoginState(manager.own().loginState + 1);
        }
        sayToParent(result + ' ' + std::to_string(timer.elapsed()) + ' ' +
                    std::to_string(log.countBeginning("shared memory lock ")));
    }
    return 0;
});

struct Answer
{
    std::string result;
    int milliseconds = -1;
    int slowLocks = -1;
};

class Workbench
{
public:
    explicit Workbench(const QString& pin)
        : m_process("workbench", {QCoreApplication::applicationName(), pin})
    {
        EXPECT_EQ(m_process.nextLine(), "ready");
    }

    void tell(const std::string& command) { m_process.say(command); }
    /// The next line as it is; empty when none comes.
    std::string line(int deadlineMs) { return m_process.nextLine(deadlineMs); }
    Answer answer()
    {
        Answer answer;
        std::istringstream(m_process.nextLine()) >> answer.result >> answer.milliseconds >>
            answer.slowLocks;
        return answer;
    }
    std::string ask(const std::string& command)
    {
        tell(command);
        return answer().result;
    }
    void kill() { m_process.kill(); }

private:
    RoleProcess m_process;
};

ToolResult unlock(const QStringList& more = {}, const QByteArray& input = {})
{
    ToolResult result =
        runTool(QStringLiteral("pavo-accounts"),
                QStringList{QStringLiteral("--application"), QCoreApplication::applicationName(),
                            QStringLiteral("unlock")} +
                    more,
                input);
    result.output.replace("\r\n", "\n");
    return result;
}

QStringList yes()
{
    return {QStringLiteral("--yes")};
}

class WrongHandsTest : public AccountsFixture
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(m_resident.ask("join"), "joined");
        view();
    }

    /// A program of somebody else that has the lock.
    static std::unique_ptr<RoleProcess> stranger()
    {
        auto process = std::make_unique<RoleProcess>("stranger", QStringList{segmentKey()});
        EXPECT_EQ(process->nextLine(), "locked");
        return process;
    }

    Workbench m_resident{QStringLiteral("resident")};
};

} // namespace

TEST_F(WrongHandsTest, EverybodyWaitsForASlowHolderAndGoesOn)
{
    Workbench newcomer(QStringLiteral("newcomer"));
    Workbench leaver(QStringLiteral("leaver"));
    ASSERT_EQ(leaver.ask("join"), "joined");
    const auto holder = stranger();
    QElapsedTimer held;
    held.start();
    m_resident.tell("mark");
    newcomer.tell("join");
    leaver.tell("quit");
    QProcess look;
    look.start(siblingExecutable(QStringLiteral("pavo-accounts")),
               {QStringLiteral("--application"), QCoreApplication::applicationName()});
    ASSERT_TRUE(look.waitForStarted(kDeadlineMs));

    const ToolResult refused = unlock({}, "n\n");
    EXPECT_EQ(refused.exitCode, 1) << "support looks, and leaves it to the living";
    EXPECT_TRUE(refused.output.contains("Waited for it in vain for 3 seconds.\n"))
        << refused.output.constData();
    EXPECT_EQ(refused.output.contains("Free it? [y/N]"), kLockOutlivesItsHolder);

    EXPECT_EQ(m_resident.line(kHoldMs - static_cast<int>(held.elapsed())), "");
    EXPECT_EQ(newcomer.line(0), "");
    EXPECT_EQ(leaver.line(0), "");
    EXPECT_EQ(look.state(), QProcess::Running);
    const auto waited = static_cast<int>(held.elapsed());
    holder->say("unlock");
    for (Workbench* each : {&m_resident, &newcomer, &leaver}) {
        const Answer answer = each->answer();
        const bool isFine =
            answer.result == "done" || answer.result == "joined" || answer.result == "1";
        EXPECT_TRUE(isFine) << answer.result;
        // Told a little after the clock was started.
        EXPECT_GT(answer.milliseconds, waited - 2000);
        EXPECT_LT(answer.milliseconds, waited + kRecoveryMs);
    }
    EXPECT_TRUE(look.waitForFinished(kDeadlineMs));
    EXPECT_EQ(look.exitCode(), 0);
    EXPECT_TRUE(look.readAll().contains(" accounts, "));
    EXPECT_EQ(lockValue(segmentKey()), 1);
    m_resident.tell("mark");
    EXPECT_GE(m_resident.answer().slowLocks, 1) << "the wait stands in the log";
}

TEST_F(WrongHandsTest, HolderThatIsKilledIsGotOver)
{
    stranger()->kill();
    m_resident.tell("mark");
    if (kLockOutlivesItsHolder) {
        EXPECT_EQ(m_resident.line(500), "") << "nobody can know that the holder is dead";
        const ToolResult freed = unlock(yes());
        EXPECT_EQ(freed.exitCode, 0);
        EXPECT_TRUE(freed.output.contains("the lock is taken, and by no workbench"))
            << freed.output.constData();
        EXPECT_TRUE(freed.output.contains("and has been freed\n")) << freed.output.constData();
    }
    const Answer answer = m_resident.answer();
    EXPECT_EQ(answer.result, "done");
    if (!kLockOutlivesItsHolder) {
        EXPECT_LT(answer.milliseconds, kRecoveryMs);
    }
    EXPECT_EQ(lockValue(segmentKey()), 1);
    const ToolResult again = unlock(yes());
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_TRUE(again.output.endsWith(": the lock is free\n")) << again.output.constData();
    EXPECT_EQ(lockValue(segmentKey()), 1);
}

// The worst moment: a workbench has passed the gate and is about to take the lock.
TEST_F(WrongHandsTest, HolderThatIsKilledInFrontOfAWorkbenchInTheGateIsGotOver)
{
    m_resident.tell("mark after a stop in the gate");
    ASSERT_EQ(m_resident.line(kDeadlineMs), "stopped");
    const auto holder = stranger();
    m_resident.tell("go on");
    EXPECT_EQ(m_resident.line(500), "") << "it waits for the lock";
    holder->kill();
    if (kLockOutlivesItsHolder) {
        EXPECT_EQ(m_resident.line(500), "");
        const ToolResult freed = unlock(yes());
        EXPECT_EQ(freed.exitCode, 0) << freed.output.constData();
    }
    EXPECT_EQ(m_resident.answer().result, "done");
    EXPECT_EQ(m_resident.ask("mark"), "done");
    EXPECT_EQ(lockValue(segmentKey()), 1);
}

TEST_F(WrongHandsTest, NothingIsFreedWithoutAYes)
{
    stranger()->kill();
    const int left = kLockOutlivesItsHolder ? 0 : 1;
    EXPECT_EQ(unlock().exitCode, kLockOutlivesItsHolder ? 1 : 0) << "nobody to ask";
    EXPECT_EQ(lockValue(segmentKey()), left);
    const ToolResult asked = unlock({}, "y\n");
    EXPECT_EQ(asked.exitCode, 0);
    EXPECT_EQ(asked.output.contains("Free it? [y/N]"), kLockOutlivesItsHolder);
    EXPECT_EQ(lockValue(segmentKey()), 1);
    EXPECT_EQ(m_resident.ask("mark"), "done");
}

TEST_F(WrongHandsTest, LockOfALivingWorkbenchIsNeverFreed)
{
    m_resident.tell("stay");
    ASSERT_EQ(m_resident.line(kDeadlineMs), "staying");
    const ToolResult refused = unlock(yes());
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.output.contains("a process that lives has the lock or waits for it"))
        << refused.output.constData();
    EXPECT_EQ(lockValue(segmentKey()), 0);
    EXPECT_EQ(m_resident.ask("go on"), "done");
    EXPECT_EQ(lockValue(segmentKey()), 1);
}

TEST_F(WrongHandsTest, WorkbenchThatIsKilledInTheLockLeavesItToWhoeverLooks)
{
    Workbench victim(QStringLiteral("victim"));
    ASSERT_EQ(victim.ask("join"), "joined");
    victim.tell("stay");
    ASSERT_EQ(victim.line(kDeadlineMs), "staying");
    victim.kill();
    EXPECT_EQ(unlock().exitCode, 0) << "that it died is known: there is nothing to ask";
    EXPECT_EQ(lockValue(segmentKey()), 1);
    EXPECT_EQ(m_resident.ask("mark"), "done");
}

TEST_F(WrongHandsTest, FreeLockIsLeftAlone)
{
    const ToolResult free = unlock(yes());
    EXPECT_EQ(free.exitCode, 0);
    EXPECT_TRUE(free.output.endsWith(": the lock is free\n")) << free.output.constData();
    EXPECT_EQ(lockValue(segmentKey()), 1);

    EXPECT_EQ(m_resident.ask("quit"), "1");
    leave();
    const ToolResult absent = unlock(yes());
    EXPECT_EQ(absent.exitCode, 0);
    EXPECT_TRUE(absent.output.contains("nobody uses the segment")) << absent.output.constData();
    EXPECT_EQ(lockValue(segmentKey()), -1);
}
