// The sample workbench's window on a display of the test's own.

#include "tests/process/Tool.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/Wait.h"

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QSet>

#include <gtest/gtest.h>

namespace {

/// The display of whoever runs the test is left alone.
void forgetDisplays()
{
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        qunsetenv(name);
}

/// While it lives, what this process starts has a display.
class Display
{
public:
    Display()
    {
        forgetDisplays();
        // The server chooses a number that is free and says so.
        m_server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                                QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                                                QStringLiteral("-screen"), QStringLiteral("0"),
                                                QStringLiteral("1280x800x24")});
        const bool isUp =
            waitUntil([this] { return m_server.canReadLine(); }) && m_server.waitForStarted(0);
        EXPECT_TRUE(isUp) << m_server.readAllStandardError().constData();
        qputenv("DISPLAY", ':' + m_server.readLine().trimmed());
    }
    ~Display()
    {
        forgetDisplays();
        m_server.terminate();
        m_server.waitForFinished(kDeadlineMs);
    }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

private:
    QProcess m_server;
};

int colourCount(const QImage& image)
{
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            colours.insert(image.pixel(x, y));
    }
    return colours.size();
}

} // namespace

TEST(WorkbenchWindow, NeedsADisplay)
{
    forgetDisplays();
    const ToolResult result = runTool(QStringLiteral("pavo-workbench"), {});
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_EQ(result.errors, "pavo-workbench: there is no display; --headless does without\n");
}

TEST(WorkbenchWindow, ShowsTheAccountsInTheirColours)
{
    const Display display;
    const QTemporaryDir folder;
    const QString application =
        QStringLiteral("pavo-test-%1-window").arg(QCoreApplication::applicationPid());
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path()));
    const ToolResult result =
        runTool(QStringLiteral("pavo-host"),
                {QStringLiteral("--application"), application, QStringLiteral("--script"),
                 QStringLiteral(PAVO_DEMO_DIR "/three-accounts.txt"), QStringLiteral("--"),
                 siblingExecutable(QStringLiteral("pavo-workbench")),
                 QStringLiteral("--wait-enter"), QStringLiteral("--application"), application});
    QDir::setCurrent(before);
    EXPECT_EQ(result.exitCode, 0) << result.errors.constData() << result.output.constData();

    const QSize sizes[] = {{880, 580}, {880, 580}, {760, 430}};
    QSet<QRgb> grounds;
    for (int number = 1; number <= 3; ++number) {
        const QImage picture(folder.filePath(QStringLiteral("three-accounts-%1.png").arg(number)));
        ASSERT_EQ(picture.size(), sizes[number - 1]) << number;
        EXPECT_GT(colourCount(picture), 300) << number;
        // In the side panel, below the accounts.
        grounds.insert(picture.pixel(100, picture.height() - 60));
    }
    EXPECT_EQ(grounds.size(), 3) << "the skins of the three are different";
}
