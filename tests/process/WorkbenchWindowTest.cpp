// The sample workbench's window on a display of the test's own.

#include "tests/process/Display.h"
#include "tests/process/Tool.h"
#include "tests/support/Wait.h"

#include <QCoreApplication>
#include <QImage>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

/// Of all of the demo's scripts.
constexpr int kDemoMs = 10 * kDeadlineMs;

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
    QProcess demo;
    demo.setWorkingDirectory(folder.path());
    demo.start(QStringLiteral(PAVO_DEMO_DIR "/run-demo"),
               {QStringLiteral("--gui"), QCoreApplication::applicationDirPath()});
    ASSERT_TRUE(demo.waitForFinished(kDemoMs));
    EXPECT_EQ(demo.exitCode(), 0) << demo.readAllStandardError().constData()
                                  << demo.readAllStandardOutput().constData();

    const QSize sizes[] = {{880, 580}, {880, 580}, {880, 580}, {760, 430}};
    QSet<QRgb> grounds;
    for (int number = 1; number <= 4; ++number) {
        const QImage picture(folder.filePath(QStringLiteral("three-accounts-%1.png").arg(number)));
        ASSERT_EQ(picture.size(), sizes[number - 1]) << number;
        EXPECT_GT(colourCount(picture), 300) << number;
        // In the side panel, below the accounts.
        grounds.insert(picture.pixel(100, picture.height() - 60));
    }
    EXPECT_EQ(grounds.size(), 3) << "the skins of the three are different";
}
