// pavo-accounts, looking at workbenches of this process.

#include "pavo_base/JSONUtils.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/SegmentBlocker.h"
#include "tests/support/Workbenches.h"

#include <QProcess>

namespace {

class AccountsToolTest : public WorkbenchesFixture
{
protected:
    struct Result
    {
        int exitCode;
        std::string output;
        std::string errors;
    };

    static QStringList arguments(const QStringList& more)
    {
        return QStringList{QStringLiteral("--application"), QCoreApplication::applicationName()} +
               more;
    }

    static Result run(const QStringList& more)
    {
        QProcess process;
        startProgram(process, siblingExecutable(QStringLiteral("pavo-accounts")), arguments(more));
        EXPECT_TRUE(process.waitForFinished(kDeadlineMs));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), text(process.readAllStandardOutput()),
                text(process.readAllStandardError())};
    }

    static std::string text(QByteArray bytes) { return bytes.replace("\r\n", "\n").toStdString(); }

    Json::Value json()
    {
        const Result result = run({QStringLiteral("--json")});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        Json::Value value;
        EXPECT_TRUE(JSONUtils::parseJSON(result.output, value)) << result.output;
        return value;
    }

    static Result remove(const QString& pin)
    {
        return run({QStringLiteral("remove"), QStringLiteral("app"), pin});
    }

    bool segmentExists()
    {
        QSharedMemory memory(QCoreApplication::applicationName() + QStringLiteral("_MEM"));
        const pavo::SegmentGate gate(memory);
        return memory.attach();
    }
};

} // namespace

TEST_F(AccountsToolTest, ShowsWhoIsInFrontAndTheListInItsOrder)
{
    joinAll();
    a.manager.windowStateChanged(1, QRect(1, 2, 30, 40));
    a.window.setVisible(true);
    b.manager.changeCurrentUnread(3);
    c.manager.switchToCurrentPin();
    c.manager.changeLoginState(7);
    settle();
    const std::string name = QCoreApplication::applicationName().toStdString();
    const Result result = run({});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, name +
                                 ": 3 accounts, one merged window (mode 1)\n"
                                 "selected \"app\" \"c\": normal, 30x40 at 1,2, window hidden\n"
                                 "  0 \"app\" \"a\" \"" +
                                 name +
                                 " a\", window visible, unread 0, skin 1, "
                                 "login state 0\n"
                                 "  1 \"app\" \"b\" \"" +
                                 name +
                                 " b\", window hidden, unread 3 (marked), skin 1, "
                                 "login state 0\n"
                                 "* 3 \"app\" \"c\" \"" +
                                 name +
                                 " c\", window hidden, unread 0, skin 1, "
                                 "login state 7\n");
}

TEST_F(AccountsToolTest, SaysTheSameToPrograms)
{
    joinAll();
    a.manager.changeMergeMode(0, false);
    MAAccountInfo crashed;
    crashed.setAccount("app", "crashed", "class", "two\nlines", 2, 1);
    std::list<MAAccountInfo> accounts = a.manager.accounts();
    accounts.push_front(crashed);
    ASSERT_TRUE(a.manager.writeAll(accounts));
    const Json::Value value = json();
    EXPECT_EQ(value["application"].asString(), QCoreApplication::applicationName().toStdString());
    EXPECT_EQ(value["selected"]["mode"].asInt(), 0);
    EXPECT_EQ(value["selected"]["pin"].asString(), "a");
    EXPECT_EQ(value["selected"]["window"].asString(), "hidden");
    ASSERT_EQ(value["accounts"].size(), 4U);
    EXPECT_EQ(value["accounts"][0]["title"].asString(), "two\nlines");
    EXPECT_EQ(value["accounts"][0]["skin"].asInt(), 2);
    EXPECT_EQ(value["accounts"][0]["window"].asString(), "missing");
    EXPECT_FALSE(value["accounts"][0]["selected"].asBool());
    EXPECT_TRUE(value["accounts"][1]["selected"].asBool());
    EXPECT_EQ(value["accounts"][1]["window"].asString(), "hidden");
}

TEST_F(AccountsToolTest, LeavesNothingBehindWhereNobodyRuns)
{
    EXPECT_EQ(run({}).output, QCoreApplication::applicationName().toStdString() +
                                  ": 0 accounts, one merged window (mode 1)\n");
    EXPECT_EQ(json()["accounts"].size(), 0U);
    EXPECT_FALSE(segmentExists());
}

TEST_F(AccountsToolTest, WatchesWithoutKeepingTheSegment)
{
    QProcess process;
    startProgram(process, siblingExecutable(QStringLiteral("pavo-accounts")),
                 arguments({QStringLiteral("--watch"), QStringLiteral("--json")}));
    const auto nextLine = [&] {
        EXPECT_TRUE(waitUntil([&] { return process.canReadLine(); }));
        Json::Value value;
        JSONUtils::parseJSON(process.readLine().toStdString(), value);
        return value;
    };
    EXPECT_EQ(nextLine()["accounts"].size(), 0U);
    ASSERT_TRUE(a.join());
    EXPECT_EQ(nextLine()["accounts"].size(), 1U);
    EXPECT_EQ(a.manager.quitCurrentAccount(), 1);
    EXPECT_FALSE(segmentExists());
    EXPECT_EQ(nextLine()["accounts"].size(), 0U);
    ASSERT_TRUE(b.join());
    EXPECT_EQ(nextLine()["selected"]["pin"].asString(), "b") << "the earlier segment has gone";
    process.kill();
    EXPECT_TRUE(process.waitForFinished(kDeadlineMs));
}

TEST_F(AccountsToolTest, RemovesTheAccountOfACrashedProcess)
{
    joinAll();
    std::list<MAAccountInfo> accounts = a.manager.accounts();
    MAAccountInfo crashed = accounts.front();
    crashed.pin = "crashed";
    crashed.title = "gone";
    accounts.push_back(crashed);
    ASSERT_TRUE(a.manager.writeAll(accounts));
    const Result result = remove(QStringLiteral("crashed"));
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(order(a.manager.accounts()), "a:0 b:1 c:3");
    EXPECT_EQ(received(), "a: 3/0; b:; c:") << "who is in front sees to the shown list";
    EXPECT_EQ(a.manager.selected().pin, "a");
}

TEST_F(AccountsToolTest, CrashedFrontAccountIsFollowedByItsNeighbour)
{
    joinAll();
    MASelectedAccount selected = a.manager.selected();
    std::list<MAAccountInfo> accounts = a.manager.accounts();
    for (const auto& [pin, next] : {std::pair("b", "a"), std::pair("a", "c")}) {
        for (MAAccountInfo& account : accounts) {
            if (account.pin == pin)
                account.title = "gone";
        }
        selected.setAccount("app", pin, "", "gone");
        ASSERT_TRUE(a.manager.writeAll(accounts));
        ASSERT_TRUE(a.manager.writeSelected(selected));
        EXPECT_EQ(remove(QString::fromLatin1(pin)).exitCode, 0);
        settle();
        EXPECT_EQ(c.manager.selected().pin, next);
        accounts = c.manager.accounts();
    }
    EXPECT_EQ(order(accounts), "c:3");
}

TEST_F(AccountsToolTest, CrashedAccountOfSeparateWindowsBringsNobodyForward)
{
    joinSeparately();
    std::list<MAAccountInfo> accounts = a.manager.accounts();
    accounts.back().title = "gone";
    ASSERT_TRUE(a.manager.writeAll(accounts));
    EXPECT_EQ(remove(QStringLiteral("c")).exitCode, 0);
    EXPECT_EQ(order(a.manager.accounts()), "a:0 b:1");
    EXPECT_EQ(received(), "a:; b:; c: 3/0");
    EXPECT_EQ(a.manager.selected().pin, "c");
}

TEST_F(AccountsToolTest, SegmentThatCannotBeHadIsReported)
{
    const SegmentBlocker blocker(QCoreApplication::applicationName() + QStringLiteral("_MEM"));
    const std::string beginning = "pavo-accounts: the segment of " +
                                  QCoreApplication::applicationName().toStdString() +
                                  " cannot be attached, error ";
    for (const Result& result : {run({}), remove(QStringLiteral("a"))}) {
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors.substr(0, beginning.size()), beginning);
    }
}

TEST_F(AccountsToolTest, RemovesNeitherTheLivingNorTheUnknown)
{
    joinAll();
    const std::string before = allBytes();
    const Result living = remove(QStringLiteral("a"));
    EXPECT_EQ(living.exitCode, 1);
    EXPECT_EQ(living.errors, "pavo-accounts: its window is there: its process has not crashed\n");
    const Result unknown = remove(QStringLiteral("A"));
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.errors, "pavo-accounts: no such account is listed\n");
    EXPECT_TRUE(allBytes() == before);
}

TEST_F(AccountsToolTest, ListThatWouldGrowPastItsRegionIsLeftAlone)
{
    joinAll();
    // Records without most of their members, which the text of a list always has.
    std::string list = R"([{"appID":"app","pin":"x"})";
    while (list.size() < 100000)
        list += ",{}";
    putText(1024, 102400, list + "]");
    const std::string before = allBytes();
    const Result result = remove(QStringLiteral("x"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errors, "pavo-accounts: the list would not fit into the segment any more\n");
    EXPECT_TRUE(allBytes() == before);
}

TEST_F(AccountsToolTest, AnySegmentIsLookedAtWithoutHarm)
{
    for (const int size : {1, 1023, 1025, 103434}) {
        ASSERT_TRUE(createSegment(size));
        for (const char byte : {'\0', '[', '\xff'}) {
            fill(byte);
            EXPECT_EQ(run({}).exitCode, 0);
            EXPECT_EQ(remove(QStringLiteral("a")).exitCode, 1);
        }
        leave();
    }
}

TEST_F(AccountsToolTest, WrongUsageIsSaidInOneLine)
{
    for (const QStringList& wrong :
         {QStringList{QStringLiteral("remove")},
          QStringList{QStringLiteral("add"), QStringLiteral("app"), QStringLiteral("a")},
          QStringList{QStringLiteral("remove"), QStringLiteral("app"), QStringLiteral("a"),
                      QStringLiteral("b")},
          QStringList{QStringLiteral("remove"), QStringLiteral("app"), QStringLiteral("a"),
                      QStringLiteral("--json")},
          QStringList{QStringLiteral("remove"), QStringLiteral("app"), QStringLiteral("a"),
                      QStringLiteral("--watch")},
          QStringList{QStringLiteral("unlock"), QStringLiteral("now")},
          QStringList{QStringLiteral("unlock"), QStringLiteral("--json")},
          QStringList{QStringLiteral("unlock"), QStringLiteral("--watch")},
          QStringList{QStringLiteral("--yes")}, QStringList{QStringLiteral("--colour")}}) {
        const Result result = run(wrong);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1);
    }
    const Result help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.output.find("[remove APPID PIN | unlock]"), std::string::npos);
}
