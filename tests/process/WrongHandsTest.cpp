// The segment's lock in the hands of a program that takes it and knows nothing of the gate.

#include "tests/process/SegmentGateMember.h"
#include "tests/process/Tool.h"
#include "tests/support/AccountsFixture.h"
#include "tests/support/RoleProcess.h"

#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <cstdio>
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

/// Has the segment and the lock open, and does nothing with them.
const Role kBystander("bystander", [](const QStringList& arguments) {
    QSharedMemory memory(arguments[0]);
    sayToParent(memory.attach() ? "attached" : "failed");
    nextLineFromParent();
    return 0;
});

void goOnWhenTold()
{
    nextLineFromParent();
    sayToParent("begun");
}

/// A workbench that says "begun" to each command, and once more when it goes on after a stop, and
/// answers with what came of it and the milliseconds that it took.
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
        sayToParent("begun");
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
            goOnWhenTold();
        } else if (command == "mark after a stop in the gate") {
            const pavo::SegmentGate gate(manager.memory());
            sayToParent("stopped");
            goOnWhenTold();
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

    /// Returns when it has begun.
    void tell(const std::string& command)
    {
        m_process.say(command);
        EXPECT_EQ(m_process.nextLine(), "begun");
    }
    /// The next line as it is; empty when none comes.
    std::string line(int deadlineMs = kDeadlineMs) { return m_process.nextLine(deadlineMs); }
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
    void expectThatItWaitsForTheLock()
    {
        EXPECT_TRUE(waitUntil([] { return isLockAwaited(segmentKey()); }));
        EXPECT_EQ(line(0), "");
    }
    void kill() { m_process.kill(); }
    void killInTheLock()
    {
        tell("stay");
        EXPECT_EQ(line(), "staying");
        kill();
    }
    /// Ends it as it would end by itself; its exit code.
    int end()
    {
        m_process.say("");
        return m_process.waitForExit();
    }

private:
    RoleProcess m_process;
};

QStringList forAccounts(const QStringList& arguments)
{
    return QStringList{QStringLiteral("--application"), QCoreApplication::applicationName()} +
           arguments;
}

ToolResult unlock(const QStringList& more = {}, const QByteArray& input = {})
{
    ToolResult result = runTool(QStringLiteral("pavo-accounts"),
                                forAccounts(QStringList{QStringLiteral("unlock")} + more), input);
    result.output.replace("\r\n", "\n");
    return result;
}

QStringList yes()
{
    return {QStringLiteral("--yes")};
}

/// For a lock whose holder is dead, and no workbench knows of it.
void expectThatAYesFreesIt()
{
    const ToolResult freed = unlock(yes());
    EXPECT_EQ(freed.exitCode, 0);
    EXPECT_TRUE(freed.output.contains("the lock is taken, and by no workbench that lives"))
        << freed.output.constData();
    EXPECT_TRUE(freed.output.endsWith(": the lock has been freed\n")) << freed.output.constData();
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

    /// A workbench that has died with the lock while others live.
    static void leaveTheLockTaken()
    {
        Workbench victim(QStringLiteral("victim"));
        ASSERT_EQ(victim.ask("join"), "joined");
        victim.killInTheLock();
    }

    Workbench m_resident{QStringLiteral("resident")};
};

/// What waits for the lock at the same time: a workbench at work, one that starts, one that quits,
/// and the tool as it looks and as it removes the account of one that has crashed.
class EverybodyWaitsTest : public WrongHandsTest
{
protected:
    void SetUp() override
    {
        WrongHandsTest::SetUp();
        ASSERT_EQ(m_leaver.ask("join"), "joined");
        Workbench crashed(QStringLiteral("crashed"));
        ASSERT_EQ(crashed.ask("join"), "joined");
        crashed.kill();
    }

    /// Returns when all of them are at the gate.
    void begin()
    {
        m_resident.tell("mark");
        m_newcomer.tell("join");
        m_leaver.tell("quit");
        const QString tool = siblingExecutable(QStringLiteral("pavo-accounts"));
        m_look.start(tool, forAccounts({}));
        m_removal.start(tool, forAccounts({QStringLiteral("remove"), QStringLiteral("app"),
                                           QStringLiteral("crashed")}));
        ASSERT_TRUE(m_look.waitForStarted(kDeadlineMs));
        ASSERT_TRUE(m_removal.waitForStarted(kDeadlineMs));
        EXPECT_TRUE(waitUntil([] { return othersAtGate(segmentKey()) == 5; }));
        EXPECT_TRUE(waitUntil([] { return isLockAwaited(segmentKey()); }));
    }

    void expectThatAllWait(int milliseconds = 0)
    {
        EXPECT_EQ(m_resident.line(milliseconds), "");
        EXPECT_EQ(m_newcomer.line(0), "");
        EXPECT_EQ(m_leaver.line(0), "");
        EXPECT_EQ(m_look.state(), QProcess::Running);
        EXPECT_EQ(m_removal.state(), QProcess::Running);
    }

    /// Of the processes the ones that have waited for `waited` milliseconds, from now on.
    void expectThatAllGoOn(int waited)
    {
        QElapsedTimer free;
        free.start();
        const auto report = [&](const char* who) {
            const int delay = static_cast<int>(free.elapsed());
            RecordProperty(who, delay);
            std::printf("%s has gone on within %d ms\n", who, delay);
            EXPECT_LT(delay, kRecoveryMs) << who;
        };
        struct
        {
            const char* who;
            Workbench& workbench;
            const char* result;
        } const workbenches[] = {{"worker", m_resident, "done"},
                                 {"newcomer", m_newcomer, "joined"},
                                 {"quitter", m_leaver, "1"}};
        for (const auto& each : workbenches) {
            const Answer answer = each.workbench.answer();
            report(each.who);
            EXPECT_EQ(answer.result, each.result) << each.who;
            EXPECT_GE(answer.milliseconds, waited) << each.who;
        }
        struct
        {
            const char* who;
            QProcess& tool;
        } const tools[] = {{"look", m_look}, {"removal", m_removal}};
        for (const auto& each : tools) {
            EXPECT_TRUE(each.tool.waitForFinished(kDeadlineMs)) << each.who;
            report(each.who);
            EXPECT_EQ(each.tool.exitStatus(), QProcess::NormalExit) << each.who;
            EXPECT_EQ(each.tool.exitCode(), 0) << each.tool.readAllStandardError().constData();
        }
        EXPECT_TRUE(m_look.readAll().contains(" accounts, "));
    }

    void expectThatAllIsWell()
    {
        EXPECT_EQ(lockValue(segmentKey()), 1);
        std::list<MAAccountInfo> list;
        {
            const MAMutex lock(view());
            const std::string text = bytes(kMAListRegion.offset, kMAListRegion.size);
            EXPECT_TRUE(MAAccountInfo::parseJSON(text.data(), kMAListRegion.size, list));
        }
        ASSERT_EQ(list.size(), 2U) << order(list);
        EXPECT_EQ(list.front().pin, "resident");
        EXPECT_EQ(list.front().loginState, 2) << "marked twice";
        EXPECT_EQ(list.back().pin, "newcomer");
        for (Workbench* each : {&m_resident, &m_newcomer, &m_leaver})
            EXPECT_EQ(each->end(), 0);
    }

private:
    Workbench m_newcomer{QStringLiteral("newcomer")};
    Workbench m_leaver{QStringLiteral("leaver")};
    QProcess m_look;
    QProcess m_removal;
};

/// Without the view of the segment, which would tell of the death of whoever was in the gate.
class LoneWorkbenchTest : public AccountsFixture
{
};

} // namespace

TEST_F(EverybodyWaitsTest, ForASlowHolderAndGoesOn)
{
    const auto holder = stranger();
    begin();
    QElapsedTimer held;
    held.start();
    const ToolResult refused = unlock({}, "n\n");
    std::printf("unlock has said what it has found after %d ms\n",
                static_cast<int>(held.elapsed()));
    EXPECT_EQ(refused.exitCode, 1) << "support looks, and leaves it to the living";
    EXPECT_TRUE(refused.output.contains("Waited for it in vain for 3 seconds.\n"))
        << refused.output.constData();
    EXPECT_EQ(refused.output.contains("Free it? [y/N]"), kLockOutlivesItsHolder);
    expectThatAllWait(std::max(0, kHoldMs - static_cast<int>(held.elapsed())));
    const auto waited = static_cast<int>(held.elapsed());
    holder->say("unlock");
    expectThatAllGoOn(waited);
    m_resident.tell("mark");
    EXPECT_GE(m_resident.answer().slowLocks, 1) << "the wait stands in the log";
    expectThatAllIsWell();
}

TEST_F(EverybodyWaitsTest, ForAHolderThatIsKilledAndIsGotOver)
{
    const auto holder = stranger();
    begin();
    expectThatAllWait();
    holder->kill();
    if (kLockOutlivesItsHolder) {
        expectThatAYesFreesIt();
    }
    expectThatAllGoOn(0);
    EXPECT_EQ(m_resident.ask("mark"), "done");
    expectThatAllIsWell();
}

TEST_F(LoneWorkbenchTest, LockThatItLeavesToABystanderIsFreedWithAYes)
{
    Workbench lone(QStringLiteral("lone"));
    ASSERT_EQ(lone.ask("join"), "joined");
    RoleProcess bystander("bystander", {segmentKey()});
    ASSERT_EQ(bystander.nextLine(), "attached");
    lone.killInTheLock();
    Workbench newcomer(QStringLiteral("newcomer"));
    newcomer.tell("join");
    if (kLockOutlivesItsHolder) {
        newcomer.expectThatItWaitsForTheLock(); // Nobody is left who could know of the death.
        expectThatAYesFreesIt();
    }
    EXPECT_EQ(newcomer.answer().result, "joined");
    EXPECT_EQ(lockValue(segmentKey()), 1);
}

TEST_F(WrongHandsTest, HolderThatIsKilledIsGotOver)
{
    stranger()->kill();
    m_resident.tell("mark");
    if (kLockOutlivesItsHolder) {
        m_resident.expectThatItWaitsForTheLock(); // Nobody can know that the holder is dead.
        expectThatAYesFreesIt();
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
    ASSERT_EQ(m_resident.line(), "stopped");
    const auto holder = stranger();
    m_resident.tell("go on");
    m_resident.expectThatItWaitsForTheLock();
    holder->kill();
    if (kLockOutlivesItsHolder) {
        expectThatAYesFreesIt();
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
    ASSERT_EQ(m_resident.line(), "staying");
    const ToolResult refused = unlock(yes());
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.output.contains("a process that lives has the lock or waits for it"))
        << refused.output.constData();
    EXPECT_EQ(lockValue(segmentKey()), 0);
    EXPECT_EQ(m_resident.ask("go on"), "done");
    EXPECT_EQ(lockValue(segmentKey()), 1);
}

TEST_F(WrongHandsTest, WorkbenchThatIsKilledInTheLockLeavesItToTheNextOne)
{
    leaveTheLockTaken();
    const ToolResult looked = unlock();
    EXPECT_EQ(looked.exitCode, kLockOutlivesItsHolder ? 1 : 0) << looked.output.constData();
    EXPECT_EQ(looked.output.contains("a workbench was killed with the lock"),
              kLockOutlivesItsHolder);
    EXPECT_EQ(lockValue(segmentKey()), kLockOutlivesItsHolder ? 0 : 1);
    EXPECT_EQ(m_resident.ask("mark"), "done") << "also after somebody has looked";
    EXPECT_EQ(lockValue(segmentKey()), 1);
}

TEST_F(WrongHandsTest, LockOfAWorkbenchThatWasKilledIsFreedWithAYes)
{
    leaveTheLockTaken();
    const ToolResult freed = unlock(yes());
    EXPECT_EQ(freed.exitCode, 0) << freed.output.constData();
    EXPECT_EQ(freed.output.endsWith(": the lock has been freed\n"), kLockOutlivesItsHolder)
        << freed.output.constData();
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
    EXPECT_EQ(runTool(QStringLiteral("pavo-accounts"), forAccounts({})).exitCode, 0);
    EXPECT_EQ(lockValue(segmentKey()), -1) << "who looks at the accounts leaves no lock behind";
}

TEST_F(WrongHandsTest, LockThatCannotBeLookedAtIsReported)
{
    EXPECT_EQ(m_resident.ask("quit"), "1");
    leave();
    const auto obstacle = blockLock(segmentKey());
    const ToolResult failed = unlock(yes());
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_TRUE(failed.output.contains("the lock cannot be looked at, "))
        << failed.output.constData();
}
