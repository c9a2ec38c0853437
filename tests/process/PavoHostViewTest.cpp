// What the host shows of a conversation, to people and to programs.

#include "tests/process/Tool.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <gtest/gtest.h>

namespace {

const QByteArray kConversation = "expect StartupCompleted\n"
                                 "say A login\n"
                                 "Login [\"waiter\",false,1,\"\",\"\",\"secret\"]\n"
                                 "expect ChangeStatusCallback\n"
                                 "ChangeStatus [3]\n"
                                 "expect ChangeStatusCallback [3]\n"
                                 "expect-accounts merged, waiter ...\n"
                                 "text none\n"
                                 "expect-workbench parse message failed\n";

QByteArray shown(const QStringList& options, const QByteArray& before = {})
{
    const ToolResult result = ScriptRun(before + kConversation).play(headlessWorkbench(), options);
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    return result.output;
}

/// The second columns of the time line.
QSet<QByteArray> columns(const QByteArray& output)
{
    QSet<QByteArray> found;
    for (const QByteArray& line : output.split('\n')) {
        if (line.size() > 10)
            found << line.mid(10, 9).trimmed();
    }
    return found;
}

} // namespace

TEST(PavoHostView, ColoursAreThereWhenAskedFor)
{
    EXPECT_TRUE(
        shown({QStringLiteral("--color"), QStringLiteral("always")}).contains("\x1b[36mhost -->"));
    EXPECT_FALSE(shown({QStringLiteral("--color"), QStringLiteral("never")}).contains('\x1b'));
    EXPECT_FALSE(shown({}).contains('\x1b')) << "no terminal";
}

TEST(PavoHostView, KindsAreChosen)
{
    const QByteArray all = shown({});
    EXPECT_TRUE(all.contains("== A login"));
    EXPECT_TRUE(
        columns(all).contains({"host", "host -->", "host <--", "workbench", "its log", "accounts"}))
        << all.constData();
    const QByteArray both = shown({QStringLiteral("--show"), QStringLiteral("sent, received")});
    EXPECT_EQ(columns(both), QSet<QByteArray>({"host -->", "host <--"})) << both.constData();
    const QByteArray oneWay = shown({}, "show received\n");
    // The launch is not yet hidden.
    EXPECT_EQ(columns(oneWay), QSet<QByteArray>({"host", "host <--"})) << oneWay.constData();
    const QByteArray again = shown({QStringLiteral("--show"), QStringLiteral("log")}, "show\n");
    EXPECT_TRUE(columns(again).contains("host <--")) << again.constData();
}

TEST(PavoHostView, MessagesAreChosenByName)
{
    const QByteArray one =
        shown({QStringLiteral("--messages"), QStringLiteral("Login,*Completed")});
    EXPECT_TRUE(one.contains(" StartupCompleted [")) << one.constData();
    EXPECT_TRUE(one.contains(" Login [")) << one.constData();
    EXPECT_FALSE(one.contains(" ChangeStatus")) << one.constData();
    EXPECT_TRUE(one.contains("workbench: started")) << "only messages are chosen by name";
    const QByteArray exact = shown({}, "messages ChangeStatus\n");
    EXPECT_TRUE(exact.contains(" ChangeStatus [3]")) << exact.constData();
    EXPECT_FALSE(exact.contains("ChangeStatusCallback")) << exact.constData();
}

TEST(PavoHostView, HiddenMessagesAreExpectedAllTheSame)
{
    const ToolResult result =
        ScriptRun("show sent\nexpect ActivePlatform\n").play(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.errors.contains("but got StartupCompleted")) << result.errors.constData();
}

TEST(PavoHostView, JsonIsAnObjectALine)
{
    const ToolResult result =
        ScriptRun(kConversation + "examples\nwith b\n")
            .play(headlessWorkbench(),
                  {QStringLiteral("--json"), QStringLiteral("--color"), QStringLiteral("always")});
    EXPECT_EQ(result.exitCode, 1);
    QSet<QString> kinds;
    QSet<QString> fields;
    double time = 0;
    QJsonObject callback;
    const QByteArray output = result.output.trimmed();
    for (const QByteArray& line : output.split('\n')) {
        QJsonParseError error{};
        const QJsonObject object = QJsonDocument::fromJson(line, &error).object();
        ASSERT_EQ(error.error, QJsonParseError::NoError) << line.constData();
        kinds << object[QStringLiteral("kind")].toString();
        for (const QString& field : object.keys())
            fields << field;
        EXPECT_GE(object[QStringLiteral("time")].toDouble(-1), time) << line.constData();
        time = object[QStringLiteral("time")].toDouble();
        if (object[QStringLiteral("name")] == QStringLiteral("ChangeStatusCallback"))
            callback = object;
    }
    EXPECT_EQ(kinds,
              QSet<QString>(
                  {QStringLiteral("host"), QStringLiteral("sent"), QStringLiteral("received"),
                   QStringLiteral("output"), QStringLiteral("log"), QStringLiteral("accounts"),
                   QStringLiteral("heading"), QStringLiteral("text"), QStringLiteral("problem")}));
    EXPECT_EQ(fields,
              QSet<QString>({QStringLiteral("time"), QStringLiteral("kind"), QStringLiteral("text"),
                             QStringLiteral("name"), QStringLiteral("arguments")}));
    EXPECT_EQ(callback[QStringLiteral("kind")], QStringLiteral("received"));
    EXPECT_EQ(callback[QStringLiteral("arguments")], QJsonValue(QJsonArray{3}));
    EXPECT_TRUE(result.errors.endsWith("there is no workbench b\n") ||
                result.errors.endsWith("there is no workbench b\r\n"))
        << result.errors.constData();
}

TEST(PavoHostView, JsonNamesTheWorkbench)
{
    const ToolResult result =
        ScriptRun("start b\nexpect StartupCompleted\n")
            .play(headlessWorkbench(),
                  {QStringLiteral("--json"), QStringLiteral("--show"), QStringLiteral("received")});
    EXPECT_EQ(result.exitCode, 0);
    const QJsonObject object = QJsonDocument::fromJson(result.output).object();
    EXPECT_EQ(object[QStringLiteral("workbench")], QStringLiteral("b"))
        << result.output.constData();
}
