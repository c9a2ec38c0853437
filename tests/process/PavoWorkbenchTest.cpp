#include "tests/process/Tool.h"
#include "tests/support/Host.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString kWorkbench = QStringLiteral("pavo-workbench");

/// The argument of a host that is not there.
QString nobody()
{
    return QStringLiteral("pipe?param=\\\\.\\pipe\\%1&\\\\.\\pipe\\%2")
        .arg(uniquePipeName(), uniquePipeName());
}

/// Lines that start a workbench with this name and account, which joins behind the others.
QByteArray join(const QByteArray& name, const QByteArray& pin)
{
    return "start " + name + " --pin " + pin + "\nexpect-workbench workbench: account " + pin +
           " has joined\nexpect StartupCompleted\nexpect ChangeStatusCallback [1]\n";
}

const QByteArray kBothJoin = join("a", "waiter") + join("b", "cashier") +
                             "with a\n"
                             "expect-workbench list waiter login 1, cashier login 1\n"
                             "expect-accounts merged, waiter normal 860x560 at 100,80: "
                             "waiter visible login 1, cashier hidden login 1\n";

void expectFine(const QByteArray& script)
{
    const ToolResult result = ScriptRun(script).play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData() << result.output.constData();
}

} // namespace

TEST(PavoWorkbench, HelpStatesExitCodesAndCommands)
{
    const ToolResult result = runTool(kWorkbench, {QStringLiteral("--help")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.output.contains("4  the host went away"));
    EXPECT_TRUE(result.output.contains("tray FLAG TEXT NUMBER"));
}

TEST(PavoWorkbench, WrongUsageIsOneLineAndExitCode2)
{
    const QStringList usages[] = {
        {QStringLiteral("--nonsense")},
        {QStringLiteral("--log"), QStringLiteral("chatty"), nobody()},
        {QStringLiteral("--log"), QStringLiteral("warn:no-such-folder/log"), nobody()},
        {QStringLiteral("--account"), QStringLiteral("waiter"), nobody()},
        {QStringLiteral("--account"), QStringLiteral(":secret"), nobody()},
        {QStringLiteral("--pin"), QStringLiteral("porter"), nobody()},
    };
    for (const QStringList& usage : usages) {
        const ToolResult result = runTool(kWorkbench, usage);
        EXPECT_EQ(result.exitCode, 2) << qPrintable(usage.join(QLatin1Char(' ')));
        EXPECT_TRUE(result.errors.contains("pavo-workbench: ")) << result.errors.constData();
    }
}

TEST(PavoWorkbench, CommandLineWithoutPipesIsExitCode3)
{
    const ToolResult result = runTool(kWorkbench, {QStringLiteral("--headless")});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_TRUE(result.errors.contains("pavo-workbench: the command line names no two pipes"));
}

TEST(PavoWorkbench, HostThatGoesBeforeTheMainWindowIsExitCode4)
{
    const ToolResult result = runTool(
        kWorkbench, {QStringLiteral("--headless"), QStringLiteral("--wait-enter"), nobody()});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_TRUE(result.output.contains("before the main window was entered"));
}

TEST(PavoWorkbench, HostThatGoesLaterIsExitCode0)
{
    const ToolResult result = runTool(kWorkbench, {QStringLiteral("--headless"), nobody()});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.output.contains("workbench: the host has gone"));
}

TEST(PavoWorkbench, LogGoesToTheFile)
{
    const QTemporaryDir folder;
    const QString fileName = folder.filePath(QStringLiteral("log"));
    const ToolResult result =
        runTool(kWorkbench, {QStringLiteral("--headless"), QStringLiteral("--log"),
                             QStringLiteral("debug:") + fileName, nobody()});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_FALSE(result.errors.contains("Could not open pipe"));
    QFile file(fileName);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray log = file.readAll();
    EXPECT_TRUE(log.contains("parse cmd line "));
    EXPECT_TRUE(log.contains("Could not open pipe. GLE=2"));
}

TEST(PavoWorkbench, AccountsAreThoseOfTheCommandLine)
{
    const ScriptRun script("expect StartupCompleted\n"
                           "Login [\"waiter\",false,1,\"\",\"\",\"secret\"]\n"
                           "expect ShowMessageBox [\"The account is unknown.\",6]\n"
                           "Login [\"porter\",false,1,\"\",\"\",\"a:b\"]\n"
                           "expect ChangeStatusCallback [1]\n");
    const ToolResult result = script.play(headlessWorkbench() << QStringLiteral("--account")
                                                              << QStringLiteral("porter:a:b"));
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
}

TEST(PavoWorkbench, EveryCommandSendsItsMessage)
{
    const ScriptRun script("expect StartupCompleted\n"
                           "workbench active\n"
                           "expect ActivePlatform []\n"
                           "workbench base-info \"two words\"\n"
                           "expect BaseInfoChanged [\"two words\"]\n"
                           "workbench cef-exception -1 a b c d e\n"
                           "expect UploadCefException [-1,\"a\",\"b\",\"c\",\"d\",\"e\"]\n"
                           "workbench enter 9\n"
                           "expect StartupCompleted [9,\"2.1.0\"]\n"
                           "workbench enter\n"
                           "expect StartupCompleted [0,\"2.1.0\"]\n"
                           "workbench interface-exception 1 a b c\n"
                           "expect UploadInterfaceException [1,\"a\",\"b\",\"c\"]\n"
                           "workbench login-failure waiter 5 sorry\n"
                           "expect ShowMessageBox [\"sorry\",6]\n"
                           "workbench login-status -2\n"
                           "expect ChangeLoginInitStatus [-2]\n"
                           "workbench plugin name false\n"
                           "expect OpenPlugin [\"name\",false]\n"
                           "workbench setting page\n"
                           "expect OpenSetting [\"page\"]\n"
                           "workbench skin 1\n"
                           "expect ChangeSkin [\"orange\"]\n"
                           "workbench status 7\n"
                           "expect ChangeStatusCallback [7]\n"
                           "workbench tray false icon 3\n"
                           "expect TrayIconAction [false,\"icon\",3]\n"
                           "workbench unread 4\n"
                           "expect UnreadMessageChanged [4]\n"
                           "workbench url link true\n"
                           "expect OpenUrl [\"link\",true]\n"
                           "workbench help\n"
                           "expect-workbench unread COUNT\n"
                           "workbench quit\n"
                           "expect-exit 0\n");
    const ToolResult result = script.play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
}

TEST(PavoWorkbench, CommandThatIsNotUnderstoodIsRefusedWithItsUsage)
{
    const ScriptRun script("expect StartupCompleted\n"
                           "workbench unread many\n"
                           "expect-workbench pavo-workbench: usage: unread COUNT\n"
                           "workbench unread\n"
                           "expect-workbench pavo-workbench: usage: unread COUNT\n"
                           "workbench plugin name yes\n"
                           "expect-workbench pavo-workbench: usage: plugin TEXT FLAG\n"
                           "workbench make-coffee\n"
                           "expect-workbench pavo-workbench: no such command: make-coffee\n"
                           "workbench active\n"
                           "expect ActivePlatform\n");
    const ToolResult result = script.play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
}

TEST(PavoWorkbench, StateOfTheWindowIsHandedOn)
{
    expectFine(
        kBothJoin +
        "workbench maximise\n"
        "expect-accounts merged, waiter maximised 860x560 at 100,80: ...\n"
        "with b\n"
        "workbench front\n"
        "expect-workbench account code 1, front cashier, merged, state 3, 860x560 at 100,80\n"
        "expect-workbench window shown, state 3, 860x560 at 100,80\n"
        "with a\n"
        "expect-workbench window hidden\n"
        "with b\n"
        "workbench minimise\n"
        "expect-accounts merged, cashier minimised 860x560 at 100,80: "
        "waiter hidden login 1, cashier visible login 1\n"
        "with a\n"
        "workbench popup true\n"
        "expect-workbench account code 1, front waiter, merged, state 2\n"
        "expect-workbench window shown, state 1, 860x560 at 100,80\n"
        "expect-accounts merged, waiter normal 860x560 at 100,80: "
        "waiter visible login 1, cashier hidden login 1\n"
        "workbench sel\n"
        "expect-workbench front waiter, merged, state 1, 860x560 at 100,80\n");
}

TEST(PavoWorkbench, MinimisedWindowComesUpForItsOwnAccount)
{
    expectFine(join("a", "waiter") +
               "workbench minimise\n"
               "expect-workbench window shown, state 2\n"
               "workbench popup false\n"
               "workbench sel\n"
               "expect-workbench front waiter, merged, state 2, 860x560 at 100,80\n"
               "workbench popup true\n"
               "expect-workbench window shown, state 1, 860x560 at 100,80\n"
               "expect-accounts merged, waiter normal 860x560 at 100,80: ...\n");
}

TEST(PavoWorkbench, PlaceIsRememberedAfterTheWindowWasMaximised)
{
    expectFine(join("a", "waiter") + "workbench place 20 20 500 400\n"
                                     "workbench maximise\n"
                                     "expect-accounts merged, waiter maximised 500x400 at 20,20: "
                                     "...\n"
                                     "workbench place 30 30 600 450\n"
                                     "expect-accounts merged, waiter normal 600x450 at 30,30: "
                                     "...\n");
}

TEST(PavoWorkbench, PlaceThatIsNoneIsRefused)
{
    QByteArray script = join("a", "waiter");
    for (const char* const place :
         {"0 0 0 400", "0 0 500 -1", "2147483647 0 500 400", "0 2147483647 500 400"})
        script += "workbench place " + QByteArray(place) +
                  "\nexpect-workbench there is no such place for a window\n";
    expectFine(script + "workbench place 2147483146 -2147483648 500 400\n"
                        "expect-accounts merged, waiter normal 500x400 at "
                        "2147483146,-2147483648: ...\n");
}

TEST(PavoWorkbench, HiddenWindowIsShownWhenItsHostWantsSeparateOnes)
{
    expectFine(kBothJoin + "with b\n"
                           "ChangeSetting [\"{\\\"merge\\\":false}\"]\n"
                           "expect-workbench account code 1, front cashier, separate\n"
                           "expect-workbench window shown, state 1, 860x560 at 100,80\n"
                           "expect-accounts separate, ...: "
                           "waiter visible login 1, cashier visible login 1\n");
}

TEST(PavoWorkbench, AccountsAreListedAgainWhenTheHostMergesTheirWindows)
{
    expectFine(kBothJoin + "workbench merge false\n"
                           "expect-workbench separate, state 1, 860x560 at 100,80, list waiter "
                           "login 1\n"
                           "with b\n"
                           "expect-workbench account code 1, front cashier, separate\n"
                           "with a\n"
                           "ChangeSetting [\"{\\\"merge\\\":true}\"]\n"
                           "expect-workbench account code 1, front waiter, merged, state 1, "
                           "860x560 at 100,80, list waiter login 1, cashier login 1\n"
                           "workbench switch cashier\n"
                           "expect-workbench account code 2, front cashier, merged\n");
}

TEST(PavoWorkbench, WindowThatAnotherAccountHidesIsHidden)
{
    expectFine(kBothJoin + "workbench visible\n"
                           "expect-workbench the merged window is on screen\n"
                           "with b\n"
                           "workbench hide\n"
                           "with a\n"
                           "expect-workbench account code 6, front waiter\n"
                           "expect-workbench window hidden\n"
                           "expect-accounts merged, waiter hidden 860x560 at 100,80: "
                           "waiter hidden login 1, cashier hidden login 1\n"
                           "workbench visible\n"
                           "expect-workbench no merged window is on screen\n"
                           "workbench toggle\n"
                           "expect-accounts merged, waiter normal 860x560 at 100,80: "
                           "waiter visible login 1, cashier hidden login 1\n");
}

TEST(PavoWorkbench, MarksAndOrderAreShared)
{
    expectFine(
        kBothJoin +
        "with b\n"
        "workbench account-mark 1\n"
        "with a\n"
        "expect-workbench account code 4, front waiter\n"
        "expect-accounts merged, ...: waiter visible login 1, cashier hidden mark 1 login 1\n"
        "with b\n"
        "workbench account-mark 0\n"
        "workbench account-skin 3\n"
        "expect-accounts merged, ...: "
        "waiter visible login 1, cashier hidden skin 3 login 1\n"
        "with a\n"
        "workbench sort cashier waiter\n"
        "workbench account-unread 2\n"
        "expect-workbench list cashier skin 3 login 1, waiter unread 2 login 1\n"
        "workbench list\n"
        "expect-workbench workbench: list cashier skin 3 login 1, waiter unread 2 login 1\n"
        "expect-accounts merged, ...: "
        "cashier hidden skin 3 login 1, waiter visible unread 2 login 1\n"
        "workbench switch porter\n"
        "expect-workbench workbench: there is no account porter\n");
}

TEST(PavoWorkbench, SeparateWindowsAreAllShown)
{
    expectFine(kBothJoin + "workbench merge false\n"
                           "expect-workbench account code 1, front waiter, separate\n"
                           "with b\n"
                           "expect-workbench account code 1, front cashier, separate\n"
                           "expect-accounts separate, cashier normal 860x560 at 100,80: "
                           "waiter visible login 1, cashier visible login 1\n"
                           "workbench merge true\n"
                           "expect-workbench account code 1, front cashier, merged\n"
                           "expect-accounts merged, cashier normal 860x560 at 100,80: "
                           "waiter hidden login 1, cashier visible login 1\n");
}

TEST(PavoWorkbench, AccountThatComesBackIsThereAtOnce)
{
    expectFine(kBothJoin + "workbench quit-account\n"
                           "expect-workbench account waiter has quit\n"
                           "Login\n"
                           "expect-workbench account waiter has joined\n"
                           "expect-workbench list cashier login 1, waiter login 1\n"
                           "workbench list\n"
                           "expect-workbench workbench: list cashier login 1, waiter login 1\n"
                           "with b\n"
                           "expect-workbench list cashier login 1, waiter login 1\n");
}

TEST(PavoWorkbench, PresenceIsThatOfTheLoginService)
{
    const ToolResult result =
        ScriptRun(join("a", "waiter") + "workbench screenshot picture.png\n"
                                        "expect-workbench no screenshot\n"
                                        "workbench presence 7\n"
                                        "expect ChangeStatusCallback [7]\n"
                                        "expect-accounts ...: waiter visible login 7\n")
            .play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
}
