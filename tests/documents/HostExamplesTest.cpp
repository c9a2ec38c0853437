#include "ipc/KTChannelManager.h"
#include "pavo_core/PAVOCore.h"
#include "pavo_core/QLoginObserver.h"
#include "pavo_core/SimulatedLoginService.h"
#include "tests/documents/Page.h"
#include "tests/process/Tool.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>

// Each host of examples/ converses with workbenches as docs/hosts.md says.

namespace {

/// A workbench that enters its main window once its login has succeeded, and has texts in Chinese.
class LateWorkbench
{
public:
    int run()
    {
        m_service->addAccount("waiter", "secret");
        m_core.getCoreConfig().clientVersion = "2.1.0";
        PAVOCore::setShareInstance(&m_core);
        const auto started = [](int code, const std::string&, const QString&) {
            if (code < 0)
                QCoreApplication::exit(1);
        };
        if (!channel().startUp(QCoreApplication::arguments().last(), started, nullptr))
            return 2;
        // Behind the channel's own observer: the host learns of the login first.
        m_observer.onPresenceChanged = [](const std::string&, int, int presence) {
            if (presence == SimulatedLoginService::Online)
                QMetaObject::invokeMethod(QCoreApplication::instance(), enter);
        };
        m_service->addLoginObserver(&m_observer);
        const int result = QCoreApplication::exec();
        m_service->removeLoginObserver(&m_observer);
        return result;
    }

private:
    static KTChannelManager& channel() { return *KTChannelManager::sharedInstance(); }
    static void enter()
    {
        auto* observer = new KTChannelObserver;
        observer->onOpenLXWindow = [](int, const std::string&, const std::string& customer) {
            channel().trayIconAction(true, customer + " 在等待", 1);
        };
        observer->onPipeClosed = [] { QCoreApplication::quit(); };
        channel().enterMainUI(0, observer);
    }

    const std::shared_ptr<SimulatedLoginService> m_service =
        std::make_shared<SimulatedLoginService>();
    PAVOCore m_core{m_service};
    QLoginObserver m_observer;
};

const Role kLateWorkbench("late-workbench", [](const QStringList& arguments) {
    QByteArray program("late-workbench");
    QByteArray channel = arguments.last().toLocal8Bit();
    char* argv[] = {program.data(), channel.data(), nullptr};
    int argc = 2;
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(
        QStringLiteral("pavo-test-%1").arg(QCoreApplication::applicationPid()));
    return LateWorkbench().run();
});

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
protected:
    /// Has the host start `workbench` and waits for both to end; the exit code is the host's.
    ToolResult host(const QStringList& workbench) const
    {
        QStringList command = GetParam().command;
        for (QString& word : command)
            if (!word.contains(QLatin1Char('/')))
                word = siblingExecutable(word);
        QProcess process;
        const QString program = command.takeFirst();
        process.start(program, command + workbench);
        if (!process.waitForFinished(10 * kDeadlineMs) ||
            process.exitStatus() != QProcess::NormalExit)
            return {-1, process.readAllStandardOutput(), process.readAllStandardError()};
        return {process.exitCode(), process.readAllStandardOutput(),
                process.readAllStandardError()};
    }

    /// The lines of the conversation that a host has printed.
    static std::string conversation(const QByteArray& output)
    {
        QByteArrayList lines;
        for (const QByteArray& line : QByteArray(output).replace('\r', QByteArray()).split('\n'))
            if (line.startsWith("> ") || line.startsWith("< "))
                lines << line;
        return lines.join('\n').toStdString();
    }

    static std::string onThePage(std::size_t which)
    {
        const auto blocks = Page(QStringLiteral("hosts.md"))
                                .section(QStringLiteral("The conversation"))
                                .blocks(QStringLiteral("text"));
        return blocks.at(which).toStdString();
    }
};

} // namespace

TEST_P(HostExamplesTest, ConversesAsThePageSays)
{
    const ToolResult result = host(headlessWorkbench());
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_EQ(conversation(result.output), onThePage(0));
    EXPECT_TRUE(
        result.output.contains(R"(workbench: open conversation "customer-7", kind 3, "order-42")"))
        << result.output.constData();
}

TEST_P(HostExamplesTest, ConversesWithAMainWindowThatComesAfterTheLogin)
{
    const ToolResult result = host({QCoreApplication::applicationFilePath(),
                                    QStringLiteral("--role"), QStringLiteral("late-workbench")});
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    EXPECT_EQ(conversation(result.output), onThePage(1));
}

TEST_P(HostExamplesTest, SeesThatTheWorkbenchHasEndedBeforeItOpenedThePipes)
{
    const ToolResult result =
        host({siblingExecutable(QStringLiteral("pavo-workbench")), QStringLiteral("--version")});
    EXPECT_GT(result.exitCode, 0) << result.output.constData();
}

TEST_P(HostExamplesTest, SaysInALineOrTwoThatTheWorkbenchCannotBeStarted)
{
    const ToolResult result = host({QStringLiteral("no/such/workbench")});
    EXPECT_GT(result.exitCode, 0);
    EXPECT_GT(result.errors.count('\n'), 0);
    EXPECT_LE(result.errors.count('\n'), 2) << result.errors.constData();
}

INSTANTIATE_TEST_SUITE_P(Languages, HostExamplesTest, testing::ValuesIn(examples()),
                         [](const auto& test) { return std::string(test.param.name); });
