#include "tests/documents/Page.h"
#include "tests/process/Tool.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <gtest/gtest.h>

#include <QProcess>

// Each host of examples/ converses with the sample workbench as docs/hosts.md says.

namespace {

/// A host, as the command to which the workbench's is added.
struct Example
{
    const char* name;
    QStringList command;
};

void PrintTo(const Example& example, std::ostream* out)
{
    *out << example.name;
}

std::vector<Example> examples()
{
    std::vector<Example> all{{"Cpp", {QStringLiteral("example-host")}}};
#ifndef Q_OS_WIN
    all.push_back(
        {"Python",
         {QStringLiteral(PAVO_PYTHON), sourceFile(QStringLiteral("examples/host/host.py"))}});
    all.push_back({"Node",
                   {QStringLiteral(PAVO_NODE), sourceFile(QStringLiteral("examples/host/host.js")),
                    QStringLiteral("pavo-host")}});
#endif
    return all;
}

class HostExamplesTest : public testing::TestWithParam<Example>
{
};

} // namespace

TEST_P(HostExamplesTest, ConversesAsThePageSays)
{
    QStringList command = GetParam().command;
    for (QString& word : command)
        if (!word.contains(QLatin1Char('/')))
            word = siblingExecutable(word);
    QProcess host;
    host.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QString program = command.takeFirst();
    host.start(program, command + headlessWorkbench());
    ASSERT_TRUE(host.waitForFinished(10 * kDeadlineMs));
    const QString output =
        QString::fromUtf8(host.readAllStandardOutput()).remove(QLatin1Char('\r'));
    EXPECT_EQ(host.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(host.exitCode(), 0) << qPrintable(output);

    QStringList conversation;
    for (const QString& line : output.split(QLatin1Char('\n')))
        if (line.startsWith(QStringLiteral("> ")) || line.startsWith(QStringLiteral("< ")))
            conversation << line;
    const auto onThePage = Page(QStringLiteral("hosts.md"))
                               .section(QStringLiteral("The conversation"))
                               .blocks(QStringLiteral("text"));
    ASSERT_EQ(onThePage.size(), 1U);
    EXPECT_EQ(conversation.join(QLatin1Char('\n')).toStdString(), onThePage.front().toStdString());
    EXPECT_TRUE(output.contains(
        QStringLiteral(R"(workbench: open conversation "customer-7", kind 3, "order-42")")))
        << qPrintable(output);
}

INSTANTIATE_TEST_SUITE_P(Languages, HostExamplesTest, testing::ValuesIn(examples()),
                         [](const auto& test) { return std::string(test.param.name); });
