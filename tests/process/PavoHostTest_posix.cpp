// What only this system gives a test: terminals, devices and permissions.

#include "tests/process/Tool.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace {

/// The host of the sample workbench, with a terminal as its standard input.
class PavoHostPrompt : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_GE(m_terminal, 0);
        ASSERT_EQ(grantpt(m_terminal), 0);
        ASSERT_EQ(unlockpt(m_terminal), 0);
        m_host.setStandardInputFile(QString::fromLocal8Bit(ptsname(m_terminal)));
        m_host.setProcessChannelMode(QProcess::MergedChannels);
        m_host.start(siblingExecutable(QStringLiteral("pavo-host")),
                     QStringList{QStringLiteral("--")} + headlessWorkbench());
        ASSERT_TRUE(shows("StartupCompleted"));
    }

    ~PavoHostPrompt() override
    {
        m_host.kill();
        m_host.waitForFinished(kDeadlineMs);
        ::close(m_terminal);
    }

    void type(const QByteArray& line)
    {
        m_shown.clear();
        ASSERT_EQ(
            ::write(m_terminal, (line + '\n').constData(), static_cast<size_t>(line.size() + 1)),
            line.size() + 1);
    }

    /// Waits until the host has shown the text since the last line was typed.
    bool shows(const QByteArray& text)
    {
        return waitUntil([&] {
            m_shown += m_host.readAll();
            return m_shown.contains(text);
        });
    }

    QProcess m_host;

private:
    const int m_terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    QByteArray m_shown;
};

} // namespace

TEST(PavoHostScript, CanComeFromAPipe)
{
    const ToolResult result = runTool(QStringLiteral("pavo-host"),
                                      {QStringLiteral("--script"), QStringLiteral("/dev/stdin")},
                                      "say first\nsay last\n");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.output.contains("== first")) << result.output.constData();
    EXPECT_TRUE(result.output.contains("== last")) << result.output.constData();
}

TEST(ToolOutput, ThatCannotBeWrittenIsTold)
{
    const struct
    {
        const char* tool;
        QStringList arguments;
        QByteArray input;
    } cases[] = {
        {"pavo-host", {QStringLiteral("--help")}, ""},
        // Nobody reads on, so that nothing is waited for.
        {"pavo-host", {}, "wait 600000\n"},
        {"pavo-accounts", {QStringLiteral("--watch")}, ""},
    };
    for (const auto& each : cases) {
        QProcess process;
        process.setStandardOutputFile(QStringLiteral("/dev/full"));
        process.start(siblingExecutable(QLatin1String(each.tool)), each.arguments);
        process.write(each.input);
        process.closeWriteChannel();
        ASSERT_TRUE(process.waitForFinished(kDeadlineMs));
        EXPECT_EQ(process.exitCode(), 1) << each.tool;
        EXPECT_EQ(process.readAllStandardError(),
                  QByteArray(each.tool) + ": not all of the output could be written\n");
    }
}

TEST(PavoHostRecordTo, FullDeviceIsToldAndLeftAsItIs)
{
    const QString device = QStringLiteral("/dev/full");
    const QFile::Permissions before = QFile::permissions(device);
    const ToolResult result = ScriptRun("expect StartupCompleted\n")
                                  .play(headlessWorkbench(), {QStringLiteral("--record"), device});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.errors.contains("the recording is not whole")) << result.errors.constData();
    EXPECT_EQ(QFile::permissions(device), before);
}

TEST(PavoHostRecordTo, OnlyTheOwnerReadsAFile)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("recording.txt"));
    EXPECT_EQ(ScriptRun("close\n").play({}, {QStringLiteral("--record"), file}).exitCode, 0);
    EXPECT_EQ(QFile::permissions(file) & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
}

TEST_F(PavoHostPrompt, CompletesNamesRepeatsAndForgives)
{
    type("OpenB");
    EXPECT_TRUE(shows("workbench: open the base-information settings"));
    type("again");
    EXPECT_TRUE(shows("workbench: open the base-information settings"));
    type("ChangeS");
    EXPECT_TRUE(shows("ChangeSetting  ChangeStatus  ChangeSkin"));
    type("nonsense");
    EXPECT_TRUE(shows("pavo-host: neither a command nor a message: nonsense"));
    type("Login");
    EXPECT_TRUE(shows("ChangeStatusCallback")) << "a name alone sends its example";
    type("history");
    EXPECT_TRUE(shows("   1  OpenB"));
    type("quit");
    ASSERT_TRUE(m_host.waitForFinished(kDeadlineMs));
    EXPECT_EQ(m_host.exitCode(), 0);
    EXPECT_TRUE(shows("exit code 0\n> \r  \r")) << "no prompt is left behind";
}
