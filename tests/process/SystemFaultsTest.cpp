// Systems that lack something, as a workbench process meets them.

#include "tests/process/Tool.h"
#include "tests/support/AccountsFixture.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

using Lines = std::vector<std::string>;

/// A device that is always full, also under the emulation.
#ifdef _WIN32
const QString kFullDevice = QStringLiteral("Z:/dev/full");
#else
const QString kFullDevice = QStringLiteral("/dev/full");
#endif

using LongNamesTest = AccountsFixture;

} // namespace

TEST(FullDiskTest, LogThatCannotBeWrittenStopsNothing)
{
    if (!QFile(kFullDevice).open(QIODevice::WriteOnly | QIODevice::ExistingOnly))
        GTEST_SKIP() << "this system has no disk that is full for sure";
    const QTemporaryDir folder;
    const QFile file(folder.filePath(QStringLiteral("log.txt")));
    for (const QString& name : {file.fileName(), kFullDevice}) {
        const ToolResult result = workWithLog(name);
        EXPECT_EQ(result.exitCode, 0) << result.errors.constData();
    }
    EXPECT_GT(file.size(), 0) << "there is something to be lost";
}

TEST_F(LongNamesTest, ClassesAndTitlesThatNoWindowCanHaveAreNotFound)
{
    MAManagerProbe manager;
    ASSERT_TRUE(manager.join("pin"));
    for (const std::size_t length : {std::size_t{300}, std::size_t{70000}}) {
        log.clear();
        const std::string text(length, 'x');
        manager.post(text, "title", 1, 0);
        manager.post("class", text, 1, 0);
        EXPECT_EQ(complaints(),
                  (Lines{"ERROR not find window, title", "ERROR not find window, " + text}));
    }
}

TEST_F(LongNamesTest, AccountThatDoesNotFitIsNotListedAndHarmsNobody)
{
    MAManagerProbe other;
    ASSERT_TRUE(other.join("other"));
    MAManagerProbe manager;
    const std::string title(110000, 'x');
    EXPECT_TRUE(manager.initManager("app", "pin", "class", title, 1));
    EXPECT_EQ(log.countBeginning("account list too long, "), 1);
    EXPECT_EQ(order(other.accounts()), "other:1");
    EXPECT_EQ(other.selected().pin, "other");
    EXPECT_EQ(manager.quitCurrentAccount(), 1);
    EXPECT_EQ(order(other.accounts()), "other:1");
}
