#include "platform/HostPipe.h"
#include "platform/UniqueHandle.h"
#include "tests/process/Tool.h"
#include "tests/support/Host.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <map>
#include <utility>

namespace {

const QString kHost = QStringLiteral("pavo-host");

QStringList timeout(int seconds)
{
    return {QStringLiteral("--timeout"), QString::number(seconds)};
}

/// Opens no pipe and ends with its standard input.
const Role kIdler("idler", [](const QStringList&) {
    while (!nextLineFromParent().empty())
        continue;
    return 0;
});

QStringList idler()
{
    return {QCoreApplication::applicationFilePath(), QStringLiteral("--role"),
            QStringLiteral("idler")};
}

} // namespace

TEST(PavoHost, HelpStatesExitCodesAndLines)
{
    const ToolResult result = runTool(kHost, {QStringLiteral("--help")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.output.contains("3  the pipes could not be created"));
    EXPECT_TRUE(result.output.contains("expect-workbench TEXT"));
    for (const QByteArray& line : result.output.split('\n'))
        EXPECT_LT(line.trimmed().size(), 80) << line.constData();
}

TEST(PavoHost, EveryToolTellsItsVersion)
{
    for (const char* const tool : {"pavo-host", "pavo-workbench", "pavo-accounts"}) {
        const ToolResult result = runTool(QLatin1String(tool), {QStringLiteral("--version")});
        EXPECT_EQ(result.exitCode, 0) << tool;
        EXPECT_EQ(result.output.trimmed(), QByteArray(tool) + " " PAVO_VERSION);
    }
}

TEST(PavoHost, WrongUsageIsOneLineAndExitCode2)
{
    const QStringList usages[] = {
        {QStringLiteral("--nonsense")},
        {QStringLiteral("--script"), QStringLiteral("no-such-file")},
        {QStringLiteral("--script"), QStringLiteral("no-such-file"), QStringLiteral("--raw")},
        timeout(0),
        {QStringLiteral("--timeout"), QStringLiteral("soon")},
        {QStringLiteral("--color"), QStringLiteral("sometimes")},
        {QStringLiteral("--show"), QStringLiteral("sent,nonsense")},
        {QStringLiteral("--record"), QStringLiteral("no-such-folder/file")},
        {QStringLiteral("--replay"), QStringLiteral("no-such-file")},
        {QStringLiteral("--replay"), QStringLiteral("no-such-file"), QStringLiteral("--raw")},
    };
    for (const QStringList& usage : usages) {
        const ToolResult result = runTool(kHost, usage);
        EXPECT_EQ(result.exitCode, 2) << qPrintable(usage.join(QLatin1Char(' ')));
        EXPECT_TRUE(result.errors.startsWith("pavo-host: ")) << result.errors.constData();
        EXPECT_EQ(result.errors.count('\n'), 1) << result.errors.constData();
        EXPECT_EQ(result.output, "");
    }
}

TEST(PavoHost, WrongUsageIsToldWithWhatIsRight)
{
    const std::pair<QStringList, QByteArray> usages[] = {
        {{QStringLiteral("--nonsense")},
         "unknown option 'nonsense'; --help shows what can be said"},
        {{QStringLiteral("--color=sometimes")}, "--color is auto, always or never, not sometimes"},
        {timeout(0), "--timeout is a number of seconds, not 0"},
        {{QStringLiteral("--show=nonsense")},
         "not a kind of line to show: nonsense; there are host, sent, received, output, log, "
         "accounts, heading"},
        {{QStringLiteral("--script"), QStringLiteral("no-such-file")},
         "cannot read no-such-file: "},
        {{QStringLiteral("--record"), QStringLiteral("no-such-folder/file")},
         "cannot write no-such-folder/file: "},
    };
    for (const auto& [usage, problem] : usages) {
        const ToolResult result = runTool(kHost, usage);
        EXPECT_TRUE(result.errors.startsWith("pavo-host: " + problem)) << result.errors.constData();
    }
    // Who asks is answered, whatever else is wrong.
    const ToolResult help =
        runTool(kHost, {QStringLiteral("--nonsense"), QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.startsWith("Usage: ")) << help.output.constData();
}

TEST(PavoHost, ComplaintIsOneLineThatMovesNoCursor)
{
    const ToolResult result = runTool(kHost, {}, "\x1b[2Jnonsense\n");
    EXPECT_TRUE(result.errors.contains(": neither a command nor a message: \\x1b[2Jnonsense"))
        << result.errors.constData();
}

TEST(PavoHost, LineThatIsNotUnderstoodIsNamedBeforeAnythingIsDone)
{
    const char* const lines[] = {
        "nonsense",         "login",         "expect",        "expect Login {",
        "expect-workbench", "expect-exit x", "bytes",         "bytes 0g",
        "bytes 123",        "wait",          "wait -1",       "wait a while",
        "close now",        "Login [",       "Login [1] [2]", "split 3",
        "workbench",        "text",          "say",           "help me",
        "show nonsense",
    };
    for (const char* const line : lines) {
        const ScriptRun run(QByteArray("# a comment\n\n") + line + "\n");
        const ToolResult result = run.play({QStringLiteral("no-such-workbench")});
        EXPECT_EQ(result.exitCode, 2) << line;
        EXPECT_TRUE(result.errors.startsWith("pavo-host: " + run.fileName().toUtf8() + ":3: "))
            << line << ": " << result.errors.constData();
    }
}

TEST(PavoHost, ScriptIsTextInUtf8WithAnyBlanksAndLineEnds)
{
    const ToolResult result = ScriptRun("\xef\xbb\xbf"
                                        "say\t 崩溃 \r\n\tsay\tlast")
                                  .play({});
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("== 崩溃")) << result.output.constData();
    EXPECT_TRUE(result.output.contains("== last")) << result.output.constData();
    // The second one is cut off within a letter.
    for (const char* const line : {"say \xff\xfe", "say \xe5\xb4"}) {
        const ScriptRun run(QByteArray("say 崩溃\n") + line + "\n");
        const ToolResult refused = run.play({});
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_TRUE(refused.errors.contains(run.fileName().toUtf8() + ":2: this is no text"))
            << refused.errors.constData();
    }
}

TEST(PavoHost, LineOfStandardInputThatIsNotUnderstoodIsNamed)
{
    const ToolResult result = runTool(kHost, {}, "say hello\nnonsense\n");
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(result.errors.contains("standard input:2: ")) << result.errors.constData();
}

TEST(PavoHost, EveryLineThatHelpListsIsAccepted)
{
    const std::map<QByteArray, QByteArray> samples = {
        {"{...}", R"({"name":"Login"})"},
        {"NAME", "ChangeStatus [1]"},
        {"text", "text no message"},
        {"bytes", "bytes 00 ff 7F"},
        {"split", "split"},
        {"expect", R"(expect StartupCompleted [0,"2.1.0"])"},
        {"expect-workbench", "expect-workbench started"},
        {"expect-exit", "expect-exit 0"},
        {"expect-accounts", "expect-accounts nobody"},
        {"start", "start b --log off"},
        {"with", "with b"},
        {"workbench", "workbench unread 1"},
        {"wait", "wait 1"},
        {"close", "close"},
        {"say", "say something"},
        {"show", "show sent, received"},
        {"messages", "messages Login,Change*"},
        {"examples", "examples"},
        {"help", "help"},
        {"#", "# a comment"},
    };
    const ToolResult help = runTool(kHost, {}, "help\n");
    EXPECT_EQ(help.exitCode, 0);
    QByteArray script;
    int listed = 0;
    const QByteArray list = help.output.mid(help.output.indexOf("Lines of a script"));
    for (const QByteArray& line : list.split('\n')) {
        if (!line.startsWith("  ") || line.startsWith("   "))
            continue;
        const auto sample = samples.find(line.trimmed().split(' ').first());
        ASSERT_NE(sample, samples.end()) << line.constData();
        script += sample->second + '\n';
        ++listed;
    }
    EXPECT_EQ(listed, static_cast<int>(samples.size()));
    // Only the line behind them all is refused.
    const ScriptRun run(script + "nonsense\n");
    const ToolResult result = run.play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_TRUE(
        result.errors.contains(QStringLiteral(":%1: ").arg(script.count('\n') + 1).toUtf8()))
        << result.errors.constData();
}

TEST(PavoHost, EveryMessageHasAnExampleThatIsSent)
{
    const ToolResult examples = runTool(kHost, {}, "examples\n");
    const QRegularExpression pattern(QStringLiteral("^([A-Za-z]+) (\\[.*\\])\r?$"),
                                     QRegularExpression::MultilineOption);
    QByteArray script;
    int count = 0;
    auto matches = pattern.globalMatch(QString::fromUtf8(examples.output));
    for (; matches.hasNext(); ++count)
        script += matches.next().captured(1).toUtf8() + '\n';
    EXPECT_EQ(count, 9);
    const ToolResult result =
        ScriptRun("expect StartupCompleted\n" + script).play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_EQ(result.output.count("host -->"), 9) << result.output.constData();
}

TEST(PavoHost, WorkbenchThatCannotBeStartedIsExitCode3)
{
    const ToolResult result =
        ScriptRun("expect StartupCompleted\n").play({QStringLiteral("no-such-workbench")});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(result.errors.contains("cannot start no-such-workbench"));
}

TEST(PavoHost, PipesOfAnotherHostAreExitCode3)
{
    const QString name = uniquePipeName();
    const pavo::HostPipe other(name + QStringLiteral("-to-workbench"),
                               pavo::HostPipe::Direction::HostWrites);
    ASSERT_TRUE(other.isOpen());
    const ToolResult result =
        ScriptRun("close\n").play(headlessWorkbench(), {QStringLiteral("--name"), name});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(result.errors.contains("the pipes cannot be created"));
}

TEST(PavoHost, OtherMessageThanExpectedIsExitCode1)
{
    const char* const lines[] = {"expect StartupCompleted [1,\"2.1.0\"]", "expect ActivePlatform"};
    for (const char* const line : lines) {
        const ScriptRun run(QByteArray(line) + "\n");
        const ToolResult result = run.play(headlessWorkbench());
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.errors.contains(run.fileName().toUtf8() + ":1: expected " +
                                           QByteArray(line).mid(7) +
                                           " but got StartupCompleted [0,\"2.1.0\"]"))
            << result.errors.constData();
    }
}

TEST(PavoHost, WhatNeverComesIsGivenUp)
{
    const std::pair<QByteArray, QByteArray> lines[] = {
        {"expect OpenUrl", "OpenUrl"},
        {"expect-workbench coffee", "a line of the workbench with \"coffee\""},
        {"expect-exit", "the workbench's end"},
        {"OpenLXGroup", "a workbench that reads"},
    };
    for (const auto& [line, awaited] : lines) {
        const ToolResult result = ScriptRun(line + '\n').play(idler(), timeout(1));
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(result.errors.contains(":1: waited in vain for " + awaited))
            << result.errors.constData();
    }
}

TEST(PavoHost, ServesSeveralWorkbenches)
{
    const ToolResult result = ScriptRun("start a\n"
                                        "expect StartupCompleted\n"
                                        "start b --wait-enter\n"
                                        "workbench enter 7\n"
                                        "expect StartupCompleted [7,\"2.1.0\"]\n"
                                        "with a\n"
                                        "OpenBaseInfoSettingWindow\n"
                                        "expect-workbench open the base-information settings\n"
                                        "with b\n"
                                        "workbench active\n"
                                        "expect ActivePlatform\n"
                                        "workbench quit\n"
                                        "expect-exit 0\n"
                                        "with a\n"
                                        "workbench active\n"
                                        "expect ActivePlatform\n")
                                  .play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_EQ(result.output.count("launches"), 2) << "none but those of the script";
    EXPECT_TRUE(result.output.contains("a: workbench: open the base")) << result.output.constData();
}

TEST(PavoHost, WorkbenchOfANameIsOneOnly)
{
    const std::pair<QByteArray, QByteArray> lines[] = {
        {"start a\nstart a\n", ":2: there is a workbench a already"},
        {"start a\nwith b\n", ":2: there is no workbench b"},
        {"start a --log nonsense\nexpect ActivePlatform\n",
         ":2: workbench a ended with exit code 2, there will be no ActivePlatform"},
        // Another one than the present one counts, too.
        {"start a --log nonsense\nstart b\nwait 600000\n",
         ":3: workbench a ended with exit code 2\n"},
    };
    for (const auto& [script, problem] : lines) {
        ToolResult result = ScriptRun(script).play(headlessWorkbench());
        EXPECT_EQ(result.exitCode, 1) << script.constData();
        EXPECT_TRUE(result.errors.replace("\r\n", "\n").contains(problem))
            << result.errors.constData();
    }
    const ToolResult first =
        runTool(kHost, QStringList{QStringLiteral("--")} + headlessWorkbench(), "start\n");
    EXPECT_EQ(first.exitCode, 1);
    EXPECT_TRUE(first.errors.contains(":1: there is a first workbench already"))
        << first.errors.constData();
    const ToolResult result = runTool(kHost, {}, "start a\n");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.errors.contains("there is no command")) << result.errors.constData();
}

TEST(PavoHost, AccountsAreThoseOfTheSegment)
{
    const ToolResult result =
        ScriptRun("expect StartupCompleted\n"
                  "expect-accounts nobody\n"
                  "Login [\"waiter\",false,1,\"\",\"\",\"secret\"]\n"
                  "expect-accounts merged, waiter ...: waiter visible login 1\n"
                  "workbench quit-account\n"
                  "expect-accounts nobody\n")
            .play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    // Neither a part of it nor a pattern.
    const QByteArray wrongs[] = {"nobod", "nob.*"};
    for (const QByteArray& wrong : wrongs) {
        const ToolResult refused =
            ScriptRun("expect-accounts " + wrong + "\n").play({}, timeout(5));
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_TRUE(refused.output.contains("accounts   nobody")) << refused.output.constData();
        EXPECT_TRUE(refused.errors.contains("waited in vain for the accounts to be " + wrong))
            << refused.errors.constData();
    }
}

TEST(PavoHost, AccountsThatCannotBeLookedAtAreToldWithTheReason)
{
    const QTemporaryDir folder;
    const auto install = [&](const QString& tool, const QString& name) {
        const QString self = QCoreApplication::applicationFilePath();
        const QString suffix = self.endsWith(QLatin1String(".exe")) ? self.right(4) : QString();
        return QFile::copy(siblingExecutable(tool) + suffix, folder.filePath(name + suffix));
    };
    const auto look = [&](int seconds) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // On Windows the libraries are found there.
        environment.insert(QStringLiteral("PATH"),
                           QDir::toNativeSeparators(QCoreApplication::applicationDirPath()));
        process.setProcessEnvironment(environment);
        process.start(folder.filePath(kHost), timeout(seconds));
        process.write("expect-accounts nobody\n");
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(kDeadlineMs));
        EXPECT_EQ(process.exitCode(), 1);
        return process.readAllStandardOutput() + process.readAllStandardError();
    };
    ASSERT_TRUE(install(kHost, kHost));
    const QByteArray missing = look(600);
    EXPECT_TRUE(missing.contains("standard input:1: cannot start " +
                                 folder.filePath(QStringLiteral("pavo-accounts")).toUtf8() +
                                 ", which looks at the accounts: "))
        << missing.constData();
    // Another program in its place.
    ASSERT_TRUE(install(QStringLiteral("pavo-workbench"), QStringLiteral("pavo-accounts")));
    const QByteArray failed = look(2);
    EXPECT_TRUE(failed.contains("accounts   pavo-accounts has failed: pavo-workbench: "))
        << failed.constData();
    EXPECT_TRUE(failed.contains("waited in vain for the accounts")) << failed.constData();
}

TEST(PavoHost, WorkbenchThatEndsIsNotWaitedFor)
{
    const QByteArray scripts[] = {
        "expect StartupCompleted\nworkbench quit\nexpect OpenUrl\n",
        "expect StartupCompleted\nworkbench quit\nwait 600000\n",
        "expect StartupCompleted\nworkbench quit\nexpect-workbench coffee\n",
    };
    for (const QByteArray& script : scripts) {
        const ToolResult result = ScriptRun(script).play(headlessWorkbench(), timeout(600));
        EXPECT_EQ(result.exitCode, 1) << script.constData();
        EXPECT_TRUE(result.errors.contains(":3: the workbench ended with exit code 0"))
            << result.errors.constData();
    }
    const ToolResult result = ScriptRun("OpenLXGroup\n")
                                  .play({siblingExecutable(QStringLiteral("pavo-workbench")),
                                         QStringLiteral("--nonsense")},
                                        timeout(600));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.errors.contains(":1: the workbench ended with exit code 2"))
        << result.errors.constData();
}

TEST(PavoHost, EndThatIsExpectedIsFine)
{
    const ToolResult result = ScriptRun("expect StartupCompleted\nworkbench quit\nexpect-exit 0\n")
                                  .play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    const ToolResult otherCode =
        ScriptRun("expect StartupCompleted\nworkbench quit\nexpect-exit 5\n")
            .play(headlessWorkbench());
    EXPECT_EQ(otherCode.exitCode, 1);
}

TEST(PavoHost, TimePassesAfterAnEndThatIsExpected)
{
    const ToolResult result =
        ScriptRun("start\nexpect StartupCompleted\nworkbench quit\nexpect-exit 0\n"
                  "wait 20\nstart b\nexpect StartupCompleted\nclose\nwait 20\nsay over\n")
            .play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("== over")) << result.output.constData();
}

TEST(PavoHost, WorkbenchThatDoesNotFollowIsEnded)
{
    const ToolResult result = ScriptRun("close\n").play(idler(), timeout(1));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.errors.contains("waited in vain for the workbench's end"))
        << result.errors.constData();
}

TEST(PavoHost, WorkbenchThatStopsReadingIsGivenUp)
{
    const QString name = uniquePipeName();
    const ScriptRun script("text " + QByteArray(1024 * 1024, 'x') + "\n");
    QProcess host;
    host.start(siblingExecutable(kHost),
               timeout(10) + QStringList{QStringLiteral("--name"), name, QStringLiteral("--script"),
                                         script.fileName()});
    ASSERT_TRUE(host.waitForReadyRead(kDeadlineMs));
    const QString pipe = QStringLiteral("\\\\.\\pipe\\%1-to-workbench").arg(name);
    HANDLE end = CreateFileA(pipe.toUtf8().constData(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(end, INVALID_HANDLE_VALUE);
    const pavo::UniqueHandle owner(end);
    ASSERT_TRUE(host.waitForFinished(kDeadlineMs));
    EXPECT_EQ(host.exitCode(), 1);
    EXPECT_TRUE(host.readAllStandardError().contains("waited in vain for a workbench that reads"));
}

TEST(PavoHost, RawBytesArriveAsTheyAre)
{
    const QByteArray message = frame("{\"name\":\"OpenBaseInfoSettingWindow\"}");
    const ToolResult result =
        runTool(kHost,
                {QStringLiteral("--raw"), QStringLiteral("--"),
                 siblingExecutable(QStringLiteral("pavo-workbench")), QStringLiteral("--headless")},
                message + frame("\r\n\x1a") + message);
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_EQ(result.output.count("workbench: open the base-information settings"), 2)
        << result.output.constData();
    EXPECT_TRUE(result.output.contains("parse message failed ")) << result.output.constData();
}

TEST(PavoHost, CutMessageIsShownAndKnownByItsName)
{
    // Two characters of three bytes and one unit each: four bytes are missing.
    const QByteArray cut = "expect StartupCompleted\nworkbench setting 崩溃\n";
    const ToolResult result =
        ScriptRun(cut + "expect OpenSetting\nworkbench active\nexpect ActivePlatform []\n")
            .play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_TRUE(QRegularExpression(QStringLiteral(R"(OpenSetting .*\(cut: \d+ of \d+ bytes\))"))
                    .match(QString::fromUtf8(result.output))
                    .hasMatch())
        << result.output.constData();
    // What was cut off could have been arguments.
    const ToolResult withArguments =
        ScriptRun(cut + "expect OpenSetting [\"崩溃\"]\n").play(headlessWorkbench());
    EXPECT_EQ(withArguments.exitCode, 1);
}

TEST(PavoHost, WorkbenchLaunchedByHandIsServed)
{
    const ScriptRun script("expect StartupCompleted\nOpenBaseInfoSettingWindow\n");
    QProcess host;
    host.start(siblingExecutable(kHost), {QStringLiteral("--script"), script.fileName()});
    ASSERT_TRUE(host.waitForReadyRead(kDeadlineMs));
    const QString line = QString::fromUtf8(host.readLine()).trimmed();
    const ToolResult workbench =
        runTool(QStringLiteral("pavo-workbench"),
                {QStringLiteral("--headless"), line.section(QLatin1Char(' '), -1)});
    EXPECT_EQ(workbench.exitCode, 0);
    EXPECT_TRUE(workbench.output.contains("open the base-information settings"));
    ASSERT_TRUE(host.waitForFinished(kDeadlineMs));
    EXPECT_EQ(host.exitCode(), 0);
}
