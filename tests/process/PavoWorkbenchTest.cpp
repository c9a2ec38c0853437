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
    const ToolResult result = runTool(kWorkbench, {QStringLiteral("--headless"), QStringLiteral("--wait-enter"), nobody()});
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
