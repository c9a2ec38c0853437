// What windows leave in the runtime folder. The role "own-window" is WindowTest.cpp's.

#include "platform/MessageWindow.h"
#include "platform/Win32.h"
#include "tests/support/RoleProcess.h"
#include "tests/support/RuntimeFolder.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QStringList>

namespace {

bool isFound(const QString& name)
{
    const std::wstring both = name.toStdWString();
    return FindWindowW(both.c_str(), both.c_str()) != nullptr;
}

class PosixWindow : public testing::Test
{
protected:
    [[nodiscard]] QStringList files(const QString& beginning = {}) const
    {
        return m_windows.entryList({beginning + QLatin1Char('*')},
                                   QDir::Files | QDir::System | QDir::Hidden);
    }

    /// As it was before they had their names.
    void takeBackTheNames()
    {
        const QString window = files(QStringLiteral("window-")).value(0);
        const QString link = files(QStringLiteral("title-")).value(0);
        ASSERT_TRUE(m_windows.rename(window, QLatin1Char('.') + window));
        ASSERT_TRUE(m_windows.rename(link, QStringLiteral(".link-") + window));
    }

private:
    RuntimeFolder m_folder;

protected:
    QDir m_windows{QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")) + QStringLiteral("/pavo")};
};

const QString kName = QStringLiteral("window");

} // namespace

TEST_F(PosixWindow, LeavesNothingBehindWhenItIsDestroyed)
{
    {
        const pavo::MessageWindow window(kName, kName);
        EXPECT_EQ(files().size(), 2) << "the window and its short cut";
    }
    EXPECT_EQ(files().size(), 0);
}

TEST_F(PosixWindow, WhatKilledProcessesLeaveGoesWhenItIsLookedFor)
{
    const QStringList names = {kName, kName, kName, QStringLiteral("other"),
                               QStringLiteral("another")};
    for (const QString& name : names) {
        RoleProcess owner("own-window", {name});
        ASSERT_EQ(owner.nextLine(), "ready");
        owner.kill();
    }
    EXPECT_EQ(files().size(), 5 + 3) << "windows and short cuts";
    for (const QString& name : names)
        EXPECT_FALSE(isFound(name));
    EXPECT_EQ(files().size(), 0);
}

TEST_F(PosixWindow, ShortCutToNothingGoesWhenItIsLookedFor)
{
    RoleProcess owner("own-window", {kName});
    ASSERT_EQ(owner.nextLine(), "ready");
    owner.kill();
    ASSERT_TRUE(m_windows.remove(files(QStringLiteral("window-")).value(0)));
    EXPECT_EQ(files().size(), 1);
    EXPECT_FALSE(isFound(kName));
    EXPECT_EQ(files().size(), 0);
}

TEST_F(PosixWindow, WhatIsComingAboutStaysUntilItsProcessIsDead)
{
    RoleProcess owner("own-window", {kName});
    ASSERT_EQ(owner.nextLine(), "ready");
    takeBackTheNames();
    EXPECT_FALSE(isFound(kName));
    EXPECT_EQ(files().size(), 2);
    owner.kill();
    EXPECT_FALSE(isFound(kName));
    EXPECT_EQ(files().size(), 0);
}
