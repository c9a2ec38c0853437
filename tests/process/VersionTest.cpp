// One version for the library, its header and the tools.

#include "tests/process/Tool.h"

#include <gtest/gtest.h>
#include <pavo_ipc/PavoIpcVersion.h>

TEST(Version, TextIsMadeOfTheNumbers)
{
    EXPECT_EQ(PAVO_IPC_VERSION, std::to_string(PAVO_IPC_VERSION_MAJOR) + '.' +
                                    std::to_string(PAVO_IPC_VERSION_MINOR) + '.' +
                                    std::to_string(PAVO_IPC_VERSION_PATCH));
}

TEST(Version, EveryToolTellsItsNameAndVersion)
{
    for (const char* const tool : {"pavo-host", "pavo-workbench", "pavo-accounts"}) {
        const ToolResult result = runTool(QString::fromLatin1(tool), {QStringLiteral("--version")});
        EXPECT_EQ(result.exitCode, 0) << tool;
        EXPECT_EQ(result.output.trimmed().toStdString(),
                  std::string(tool) + ' ' + PAVO_IPC_VERSION);
    }
}
