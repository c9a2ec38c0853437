// Conversations that are recorded and replayed.

#include "platform/UniqueHandle.h"
#include "tests/process/Tool.h"
#include "tests/support/Host.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

const QByteArray kConversation =
    "start\n"
    "expect StartupCompleted [0,\"2.1.0\"]\n"
    "{\"name\":\"Login\",\"arguments\":[\"waiter\",false,1,\"\",\"\",\"secret\"]}\n"
    "expect ChangeStatusCallback [1]\n"
    "workbench unread 3\n"
    "expect UnreadMessageChanged [3]\n";
const QByteArray kEnd = "close\nexpect-exit 0\n";

class PavoHostRecord : public testing::Test
{
protected:
    /// Plays the lines and returns what was recorded.
    QByteArray record(const QByteArray& script, const QStringList& workbench = headlessWorkbench())
    {
        m_played = ScriptRun(script).play(workbench, {QStringLiteral("--record"), recording()});
        EXPECT_EQ(m_played.exitCode, 0) << m_played.errors.constData();
        return recorded();
    }

    QByteArray recorded() const
    {
        QFile file(recording());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    static ToolResult replay(const QByteArray& text, const QStringList& options = {})
    {
        const ScriptRun script(text);
        return runTool(
            QStringLiteral("pavo-host"),
            options +
                QStringList{QStringLiteral("--replay"), script.fileName(), QStringLiteral("--")} +
                headlessWorkbench());
    }

    QString recording() const { return m_folder.filePath(QStringLiteral("recording.txt")); }

    QTemporaryDir m_folder;
    ToolResult m_played{};
};

/// Without the pauses, which no two runs share.
QByteArray withoutPauses(const QByteArray& recording)
{
    return QString::fromUtf8(recording)
        .remove(
            QRegularExpression(QStringLiteral("^wait \\d+\n"), QRegularExpression::MultilineOption))
        .toUtf8();
}

} // namespace

TEST_F(PavoHostRecord, RecordingIsAScriptThatIsReplayed)
{
    const QByteArray recording = record(kConversation);
    EXPECT_EQ(withoutPauses(recording), kConversation + kEnd);
    const ToolResult replayed = replay(recording, {QStringLiteral("--record"), this->recording()});
    EXPECT_EQ(replayed.exitCode, 0) << replayed.errors.constData();
    EXPECT_EQ(withoutPauses(recorded()), withoutPauses(recording));
}

TEST_F(PavoHostRecord, WhateverIsSentIsRecordedAsALine)
{
    const QByteArray lines = "text none at all\n"
                             // No UTF-8; a blank at the end; a message's parts.
                             "bytes 01000000ff\n"
                             "bytes 020000006120\n"
                             "bytes 0300\n"
                             "bytes 0000616263\n"
                             "split\n"
                             "text x\n";
    const QByteArray begin = "start\nexpect StartupCompleted [0,\"2.1.0\"]\n";
    EXPECT_EQ(withoutPauses(record(begin + lines + "expect-workbench failed x\n")),
              begin + lines + kEnd);
}

TEST_F(PavoHostRecord, ReplayFailsWhereTheWorkbenchSaysSomethingElse)
{
    const QByteArray recording = record(kConversation);
    const struct
    {
        QByteArray recorded;
        QByteArray instead;
        QByteArray problem;
    } changes[] = {
        {"expect ChangeStatusCallback [1]", "expect ChangeStatusCallback [2]",
         "expected ChangeStatusCallback [2] but got ChangeStatusCallback [1]"},
        {"expect StartupCompleted [0,\"2.1.0\"]\n", "",
         "expected ChangeStatusCallback [1] but got StartupCompleted [0,\"2.1.0\"]"},
        {"expect-exit 0", "expect-exit 3", "the workbench ended with exit code 0"},
    };
    for (const auto& change : changes) {
        ASSERT_TRUE(recording.contains(change.recorded)) << recording.constData();
        const ToolResult replayed =
            replay(QByteArray(recording).replace(change.recorded, change.instead));
        EXPECT_EQ(replayed.exitCode, 1) << change.instead.constData();
        EXPECT_TRUE(replayed.errors.contains(change.problem)) << replayed.errors.constData();
    }
}

TEST_F(PavoHostRecord, ReplayFailsWhereTheWorkbenchSaysMore)
{
    // An expected end comes behind all messages.
    const struct
    {
        QString option;
        int exitCode;
        QByteArray problem;
    } cases[] = {
        {QStringLiteral("--replay"), 1, "the workbench has also said ActivePlatform []"},
        {QStringLiteral("--script"), 0, ""},
    };
    for (const auto& each : cases) {
        const QString name = uniquePipeName();
        const ScriptRun script("expect-exit\n");
        QProcess host;
        host.start(siblingExecutable(QStringLiteral("pavo-host")),
                   {QStringLiteral("--name"), name, each.option, script.fileName()});
        ASSERT_TRUE(host.waitForReadyRead(kDeadlineMs));
        {
            const QString pipe = QStringLiteral("\\\\.\\pipe\\%1-from-workbench").arg(name);
            HANDLE end = CreateFileA(pipe.toUtf8().constData(), GENERIC_WRITE, 0, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
            ASSERT_NE(end, INVALID_HANDLE_VALUE);
            const pavo::UniqueHandle owner(end);
            // Who comes and goes before the host sees it has not been there.
            QByteArray shown;
            ASSERT_TRUE(waitUntil([&] {
                shown += host.readAllStandardOutput();
                return shown.contains("has opened the pipe it writes");
            }));
            const QByteArray message = frame("{\"name\":\"ActivePlatform\",\"arguments\":[]}");
            DWORD written = 0;
            ASSERT_TRUE(WriteFile(end, message.constData(), static_cast<DWORD>(message.size()),
                                  &written, nullptr));
        }
        ASSERT_TRUE(host.waitForFinished(kDeadlineMs));
        EXPECT_EQ(host.exitCode(), each.exitCode);
        EXPECT_TRUE(host.readAllStandardError().contains(each.problem));
    }
}

TEST_F(PavoHostRecord, PausesOfTheHostAreKept)
{
    constexpr int kPauseMs = 300;
    const QByteArray recording =
        record("expect StartupCompleted\nwait 300\nOpenBaseInfoSettingWindow\n");
    const QRegularExpressionMatch pause =
        QRegularExpression(QStringLiteral("StartupCompleted .*\nwait (\\d+)\n\\{"))
            .match(QString::fromUtf8(recording));
    ASSERT_TRUE(pause.hasMatch()) << recording.constData();
    EXPECT_GE(pause.captured(1).toInt(), kPauseMs - 5);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(replay(recording).exitCode, 0);
    EXPECT_GE(clock.elapsed(), kPauseMs - 5);
}

TEST_F(PavoHostRecord, WorkbenchesAreToldApart)
{
    // The first one and one with more options.
    const ToolResult result =
        runTool(QStringLiteral("pavo-host"),
                QStringList{QStringLiteral("--record"), recording(), QStringLiteral("--")} +
                    headlessWorkbench(),
                "expect StartupCompleted\n"
                "start \"b c\" --wait-enter --account \"x y:z\"\n"
                "workbench enter 7\n"
                "expect StartupCompleted [7,\"2.1.0\"]\n"
                "with\n"
                "workbench active\n"
                "expect ActivePlatform\n");
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_EQ(withoutPauses(recorded()), "start\n"
                                         "expect StartupCompleted [0,\"2.1.0\"]\n"
                                         "start \"b c\" --wait-enter --account \"x y:z\"\n"
                                         "workbench enter 7\n"
                                         "expect StartupCompleted [7,\"2.1.0\"]\n"
                                         "with\n"
                                         "workbench active\n"
                                         "expect ActivePlatform []\n"
                                         "close\n"
                                         "expect-exit 0\n"
                                         "with b c\n" +
                                             kEnd);
    const ToolResult replayed = replay(recorded());
    EXPECT_EQ(replayed.exitCode, 0) << replayed.errors.constData();
}

TEST_F(PavoHostRecord, WorkbenchesAreReplayedWithoutAFirstOneAndAfterAnEnd)
{
    const QByteArray script = "start a\n"
                              "expect StartupCompleted [0,\"2.1.0\"]\n"
                              "start b\n"
                              "expect StartupCompleted [0,\"2.1.0\"]\n"
                              "workbench quit\n"
                              "expect-exit 0\n";
    const QByteArray end = "with a\n" + kEnd + "with b\nclose\n";
    const QByteArray recording = record(script + "wait 50\n" + end);
    EXPECT_EQ(withoutPauses(recording), script + end);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("\nexpect-exit 0\nwait \\d+\nwith a\n"))
                    .match(QString::fromUtf8(recording))
                    .hasMatch())
        << recording.constData();
    const ToolResult replayed = replay(recording);
    EXPECT_EQ(replayed.exitCode, 0) << replayed.errors.constData();
}

TEST_F(PavoHostRecord, CutMessageIsExpectedByItsName)
{
    const QByteArray recording =
        record("expect StartupCompleted\nworkbench setting 崩溃\nexpect OpenSetting\n");
    EXPECT_TRUE(recording.contains("\nexpect OpenSetting\n")) << recording.constData();
    EXPECT_EQ(replay(recording).exitCode, 0);
}
