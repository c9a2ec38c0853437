// The host between two people: everything it reads and writes is a terminal.

#include "tests/process/Tool.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

class PavoHostEditor : public testing::Test
{
protected:
    using Variables = std::initializer_list<std::pair<const char*, const char*>>;

    void start(const QStringList& options = {}, Variables variables = {})
    {
        ASSERT_GE(m_terminal, 0);
        ASSERT_EQ(grantpt(m_terminal), 0);
        ASSERT_EQ(unlockpt(m_terminal), 0);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_home.path());
        environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home.path());
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        environment.insert(QStringLiteral("TERM"), QStringLiteral("xterm"));
        environment.remove(QStringLiteral("NO_COLOR"));
        for (const auto& [name, value] : variables)
            environment.insert(QLatin1String(name), QLatin1String(value));
        m_host.setProcessEnvironment(environment);
        const QString terminal = QString::fromLocal8Bit(ptsname(m_terminal));
        m_shown.clear();
        m_host.setStandardInputFile(terminal);
        m_host.setStandardOutputFile(terminal, QIODevice::Append);
        m_host.setProcessChannelMode(QProcess::MergedChannels);
        m_host.start(siblingExecutable(QStringLiteral("pavo-host")),
                     options + QStringList{QStringLiteral("--")} + headlessWorkbench());
        ASSERT_TRUE(shows("StartupCompleted"));
        ASSERT_TRUE(shows("> "));
    }

    void end()
    {
        m_host.kill();
        m_host.waitForFinished(kDeadlineMs);
    }

    ~PavoHostEditor() override
    {
        end();
        ::close(m_terminal);
    }

    void type(const QByteArray& keys)
    {
        m_shown.clear();
        ASSERT_EQ(::write(m_terminal, keys.constData(), static_cast<size_t>(keys.size())),
                  keys.size());
    }

    /// Waits until the host has shown the text since something was typed.
    bool shows(const QByteArray& text)
    {
        return waitUntil([&] {
            char bytes[4096];
            const ssize_t count = ::read(m_terminal, bytes, sizeof bytes);
            if (count > 0)
                m_shown.append(bytes, static_cast<int>(count));
            return m_shown.contains(text);
        });
    }

    void resize(unsigned short columns)
    {
        const winsize size{24, columns, 0, 0};
        ASSERT_EQ(ioctl(m_terminal, TIOCSWINSZ, &size), 0);
    }

    /// The host's only child.
    void killWorkbench()
    {
        QFile children(QStringLiteral("/proc/%1/task/%1/children").arg(m_host.processId()));
        ASSERT_TRUE(children.open(QIODevice::ReadOnly));
        const int workbench = children.readAll().trimmed().toInt();
        ASSERT_GT(workbench, 0);
        ASSERT_EQ(::kill(workbench, SIGKILL), 0);
    }

    /// Whether the terminal does by itself what the editor does otherwise.
    bool isInLineMode() const
    {
        termios mode{};
        return tcgetattr(m_terminal, &mode) == 0 && (mode.c_lflag & ICANON) != 0;
    }

    const QTemporaryDir m_home;
    QProcess m_host;
    QByteArray m_shown;

private:
    const int m_terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
};

} // namespace

TEST_F(PavoHostEditor, EditsTheLine)
{
    start();
    type("say fxrst\x1b[D\x1b[D\x1b[D\x7fi\r");
    EXPECT_TRUE(shows("== first")) << m_shown.constData();
    type("say 崩\x7f溃\r");
    EXPECT_TRUE(shows("== 溃")) << m_shown.constData();
}

TEST_F(PavoHostEditor, CompletesTheFirstWord)
{
    start();
    type("openb\t\r");
    EXPECT_TRUE(shows("workbench: open the base-information settings")) << m_shown.constData();
    type("Ch\t");
    EXPECT_TRUE(shows("ChangeS")) << m_shown.constData();
    type("\t");
    EXPECT_TRUE(shows("ChangeSetting  ChangeStatus  ChangeSkin")) << m_shown.constData();
    EXPECT_TRUE(shows("> ChangeS")) << "what was typed stays: " << m_shown.constData();
    type("ki\t[\"{}\"]\r");
    EXPECT_TRUE(shows("ChangeSkin [\"{}\"]")) << m_shown.constData();
}

TEST_F(PavoHostEditor, KeepsTheHistoryButNotWhatIsIndented)
{
    start();
    type("say one\r");
    EXPECT_TRUE(shows("== one"));
    type(" say secret\r");
    EXPECT_TRUE(shows("== secret"));
    type("show\r");
    EXPECT_TRUE(shows("\n> "));
    type("quit\r");
    ASSERT_TRUE(m_host.waitForFinished(kDeadlineMs));
    EXPECT_EQ(m_host.exitCode(), 0);
    const QString file = m_home.filePath(QStringLiteral("pavo-host/history"));
    EXPECT_EQ(QFile::permissions(file) & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());

    start();
    type("\x1b[A\x1b[A\x1b[A\r");
    EXPECT_TRUE(shows("== one")) << "the third line from the end: " << m_shown.constData();
    type("sa\x12\r");
    EXPECT_TRUE(shows("== one")) << "found by its beginning: " << m_shown.constData();
}

TEST_F(PavoHostEditor, WhatHappensMeanwhileLeavesTheLineWhole)
{
    start();
    type("wait 200\rworkbench active\rsay typed mea");
    EXPECT_TRUE(shows("ActivePlatform []\r\n> say typed mea")) << m_shown.constData();
    type("nwhile\r");
    EXPECT_TRUE(shows("== typed meanwhile")) << m_shown.constData();
}

TEST_F(PavoHostEditor, ComplaintTakesThePlaceOfTheLine)
{
    start();
    type("expect OpenUrl\r");
    EXPECT_TRUE(shows("\r\x1b[Jpavo-host: expected OpenUrl but got StartupCompleted"))
        << m_shown.constData();
}

TEST_F(PavoHostEditor, FollowsTheTerminalsWidth)
{
    start();
    type("say " + QByteArray(50, 'x'));
    ASSERT_TRUE(shows(QByteArray(50, 'x'))) << m_shown.constData();
    resize(20);
    killWorkbench();
    // Of the line's 56 columns the last ones are in the third row.
    EXPECT_TRUE(shows("\x1b[2A\r\x1b[J")) << m_shown.constData();
    EXPECT_TRUE(shows("the workbench crashed")) << m_shown.constData();
}

TEST_F(PavoHostEditor, EndOfInputIsTheEnd)
{
    start();
    type("\x04");
    ASSERT_TRUE(m_host.waitForFinished(kDeadlineMs));
    EXPECT_EQ(m_host.exitCode(), 0);
    EXPECT_TRUE(isInLineMode());
}

TEST_F(PavoHostEditor, TerminalIsPutBackWhenASignalEndsTheHost)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        start();
        EXPECT_TRUE(waitUntil([this] { return !isInLineMode(); }));
        ::kill(static_cast<pid_t>(m_host.processId()), signal);
        ASSERT_TRUE(m_host.waitForFinished(kDeadlineMs));
        EXPECT_EQ(m_host.exitStatus(), QProcess::CrashExit) << "it has ended by the signal";
        EXPECT_TRUE(isInLineMode());
    }
}

TEST_F(PavoHostEditor, ColoursAreShownAtATerminalUnlessRefused)
{
    const struct
    {
        QStringList options;
        Variables variables;
        bool areShown;
    } cases[] = {
        {{}, {}, true},
        {{}, {{"NO_COLOR", "1"}}, false},
        {{}, {{"NO_COLOR", ""}}, true},
        {{}, {{"TERM", "dumb"}}, false},
        {{QStringLiteral("--color"), QStringLiteral("never")}, {}, false},
        {{QStringLiteral("--color"), QStringLiteral("always")}, {{"NO_COLOR", "1"}}, true},
    };
    for (const auto& each : cases) {
        start(each.options, each.variables);
        EXPECT_EQ(m_shown.contains("\x1b[32mhost <--"), each.areShown) << m_shown.constData();
        end();
    }
}
