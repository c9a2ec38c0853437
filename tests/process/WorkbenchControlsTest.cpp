// The sample workbench's window as its user has it under the mouse and the keyboard, beside another
// account's workbench, which has none.

#include "pavo_core/SimulatedLoginService.h"
#include "tests/process/OnDisplay.h"
#include "tests/support/RoleProcess.h"
#include "tools/pavo-workbench/AccountDelegate.h"
#include "tools/pavo-workbench/Commands.h"
#include "tools/pavo-workbench/PresenceBar.h"
#include "tools/pavo-workbench/Theme.h"
#include "tools/pavo-workbench/Workbench.h"
#include "tools/pavo-workbench/WorkbenchWindow.h"
#include "tools/support/Lines.h"
#include "tools/support/StandardInput.h"

#include <QApplication>
#include <QListWidget>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

const QString kOwn = QStringLiteral("waiter");
const QString kOther = QStringLiteral("cashier");

std::shared_ptr<SimulatedLoginService> makeService()
{
    auto service = std::make_shared<SimulatedLoginService>();
    for (const QString& pin : {kOwn, kOther})
        service->addAccount(pin.toStdString(), "secret");
    return service;
}

/// The other account's workbench, whose commands come from the test. The argument is the
/// installation.
const Role other("other", [](const QStringList& arguments) {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    QCoreApplication::setApplicationName(arguments[0]);
    Workbench workbench(makeService());
    StandardInput input;
    QByteArray buffer;
    QObject::connect(&input, &StandardInput::received, &workbench, [&](const QByteArray& bytes) {
        buffer += bytes;
        QString problem;
        for (const QString& line : takeLines(buffer))
            Commands::run({workbench, nullptr}, line, problem);
    });
    QObject::connect(&input, &StandardInput::ended, &workbench, &QCoreApplication::quit);
    input.start();
    workbench.logIn(kOther.toStdString(), "secret");
    workbench.accounts().enterMainWindow();
    return QCoreApplication::exec();
});

class WorkbenchControls : public testing::Test
{
protected:
    WorkbenchControls()
    {
        QCoreApplication::setApplicationName(
            QStringLiteral("pavo-test-%1").arg(QCoreApplication::applicationPid()));
        m_workbench = std::make_unique<Workbench>(makeService());
        m_window = std::make_unique<WorkbenchWindow>(*m_workbench);
    }

    void SetUp() override
    {
        m_workbench->logIn(kOwn.toStdString(), "secret");
        accounts().enterMainWindow();
        ASSERT_TRUE(waitUntil([this] { return accounts().hasJoined(); }));
        m_other = std::make_unique<RoleProcess>("other",
                                                QStringList{QCoreApplication::applicationName()});
        ASSERT_TRUE(waitUntil([this] { return item(kOther) && loginState(kOther) == 1; }));
        ASSERT_TRUE(waitUntil([this] { return m_window->isVisible(); }));
        // The process's manager knows where the test before had its window.
        static int offset = 0;
        m_window->move(200 + ++offset, 100);
        ASSERT_TRUE(isRecorded(kMANormal, m_window->geometry()));
        QApplication::setActiveWindow(m_window.get());
        list().setFocus();
    }

    Accounts& accounts() { return m_workbench->accounts(); }
    QListWidget& list() { return *m_window->findChild<QListWidget*>(QStringLiteral("accounts")); }
    QPushButton& button(const char* name)
    {
        return *m_window->findChild<QPushButton*>(QLatin1String(name));
    }
    void click(const char* name) { QTest::mouseClick(&button(name), Qt::LeftButton); }
    QListWidgetItem* item(const QString& pin)
    {
        return list().findItems(pin, Qt::MatchExactly).value(0);
    }
    int loginState(const QString& pin)
    {
        return item(pin)->data(AccountDelegate::LoginStateRole).toInt();
    }
    QPoint placeOf(const QString& pin) { return list().visualItemRect(item(pin)).center(); }

    /// Whether the record of the window comes to be this.
    bool isRecorded(int state, const QRect& rect)
    {
        return waitUntil([&] {
            const MASelectedAccount now = accounts().selected();
            return now.windowState == state && QRect(now.x, now.y, now.w, now.h) == rect;
        });
    }

    /// What the other workbench says up to a line with this text.
    std::vector<std::string> otherSays(const std::string& text)
    {
        std::vector<std::string> lines;
        do {
            lines.push_back(m_other->nextLine());
            if (lines.back().empty()) {
                ADD_FAILURE() << "the other workbench never said " << text;
                break;
            }
        } while (lines.back().find(text) == std::string::npos);
        return lines;
    }

    /// The other workbench comes to the front and goes where it wants.
    void goToOther(const std::string& place)
    {
        m_other->say("front");
        ASSERT_TRUE(waitUntil([this] { return !m_window->isVisible(); }));
        m_other->say("place " + place);
        otherSays("window shown, state 1");
    }

    std::unique_ptr<Workbench> m_workbench;
    std::unique_ptr<WorkbenchWindow> m_window;
    std::unique_ptr<RoleProcess> m_other;
};

} // namespace

QList<DisplayVariant> displayVariants()
{
    return {{}};
}

TEST_F(WorkbenchControls, ClickSwitches)
{
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, placeOf(kOther));
    otherSays("account code 1, front cashier");
    EXPECT_TRUE(waitUntil([this] { return !m_window->isVisible(); }));
}

TEST_F(WorkbenchControls, DoubleClickSwitchesOnce)
{
    QWidget* const target = list().viewport();
    const QPoint place = placeOf(kOther);
    QTest::mouseClick(target, Qt::LeftButton, {}, place);
    QTest::mouseDClick(target, Qt::LeftButton, {}, place);
    QTest::mouseRelease(target, Qt::LeftButton, {}, place);
    // Comes behind what the clicks have sent.
    accounts().switchOthersLoginState(7);
    int count = 0;
    for (const std::string& line : otherSays("account login state 7 is wanted"))
        count += line.find("account code 1") == std::string::npos ? 0 : 1;
    EXPECT_EQ(count, 1);
}

TEST_F(WorkbenchControls, ReturnSwitchesToTheCurrentRow)
{
    QTest::keyClick(&list(), Qt::Key_Down);
    EXPECT_EQ(list().currentItem(), item(kOther));
    QTest::keyClick(&list(), Qt::Key_Return);
    otherSays("account code 1, front cashier");
    EXPECT_TRUE(waitUntil([this] { return !m_window->isVisible(); }));
}

TEST_F(WorkbenchControls, NumberSwitches)
{
    QTest::keyClick(&button("hide"), Qt::Key_9, Qt::ControlModifier);
    EXPECT_TRUE(m_window->isVisible()) << "there is no ninth";
    QTest::keyClick(&button("hide"), Qt::Key_2, Qt::ControlModifier);
    otherSays("account code 1, front cashier");
    EXPECT_TRUE(waitUntil([this] { return !m_window->isVisible(); }));
}

TEST_F(WorkbenchControls, KeyboardKeepsItsRowWhenTheListChanges)
{
    QTest::keyClick(&list(), Qt::Key_Down);
    m_other->say("account-unread 2");
    ASSERT_TRUE(
        waitUntil([this] { return item(kOther)->data(AccountDelegate::UnreadRole).toInt() == 2; }));
    EXPECT_EQ(list().currentItem(), item(kOther));
}

TEST_F(WorkbenchControls, ListStaysWhereItIsScrolledTo)
{
    list().setFixedHeight(80);
    QScrollBar& bar = *list().verticalScrollBar();
    ASSERT_TRUE(waitUntil([&] { return bar.maximum() > 0; }));
    bar.setValue(bar.maximum());
    m_other->say("account-unread 2");
    ASSERT_TRUE(
        waitUntil([this] { return item(kOther)->data(AccountDelegate::UnreadRole).toInt() == 2; }));
    EXPECT_EQ(bar.value(), bar.maximum());
}

TEST_F(WorkbenchControls, KeyboardGoesWithTheFront)
{
    QTest::keyClick(&list(), Qt::Key_Down);
    goToOther("10 20 800 500");
    m_other->say("switch waiter");
    ASSERT_TRUE(waitUntil([this] { return m_window->isVisible(); }));
    EXPECT_EQ(list().currentItem(), item(kOwn));
}

TEST_F(WorkbenchControls, MergeSeparatesAndMerges)
{
    EXPECT_TRUE(button("merge").isEnabled());
    click("merge");
    otherSays("account code 1, front cashier, separate");
    EXPECT_EQ(list().count(), 1);
    click("merge");
    otherSays("account code 2, front waiter, merged");
    EXPECT_EQ(list().count(), 2);
    EXPECT_EQ(m_window->windowTitle(), QStringLiteral("waiter - Workbench"));
    accounts().quit();
    EXPECT_FALSE(button("merge").isEnabled());
    EXPECT_EQ(m_window->windowTitle(), QStringLiteral("Workbench"));
}

TEST_F(WorkbenchControls, MinimisedWindowPopsUp)
{
    const QRect place = m_window->geometry();
    click("minimise");
    EXPECT_TRUE(m_window->isMinimized());
    EXPECT_TRUE(isRecorded(kMAMinimised, place));
    accounts().popUp(true);
    EXPECT_FALSE(m_window->isMinimized());
    EXPECT_TRUE(isRecorded(kMANormal, place));
}

TEST_F(WorkbenchControls, HideHides)
{
    const QRect place = m_window->geometry();
    click("hide");
    EXPECT_FALSE(m_window->isVisible());
    EXPECT_TRUE(isRecorded(kMAHidden, place));
}

TEST_F(WorkbenchControls, PresenceIsChangedAndSpread)
{
    const auto presences = m_window->findChild<PresenceBar*>()->findChildren<QPushButton*>();
    const auto chosen = [&presences] {
        QList<bool> values;
        for (const QPushButton* each : presences)
            values << each->isChecked();
        return values;
    };
    EXPECT_EQ(chosen(), (QList<bool>{true, false, false}));
    QTest::mouseClick(presences[2], Qt::LeftButton);
    ASSERT_TRUE(waitUntil([this] { return accounts().loginState() == 3; }));
    EXPECT_EQ(chosen(), (QList<bool>{false, false, true}));
    presences[2]->setFocus();
    QTest::keyClick(presences[2], Qt::Key_Left);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    ASSERT_TRUE(waitUntil([this] { return accounts().loginState() == 2; }));
    EXPECT_EQ(chosen(), (QList<bool>{false, true, false}));
    click("forAll");
    otherSays("account login state 2 is wanted");
    EXPECT_TRUE(waitUntil([this] { return loginState(kOther) == 2; }));
}

TEST_F(WorkbenchControls, SizeAndPlaceAreRecorded)
{
    const QRect place(70, 90, 901, 601);
    m_window->setGeometry(place);
    EXPECT_TRUE(isRecorded(kMANormal, place));
}

TEST_F(WorkbenchControls, WindowIsAsSmallAsItIsHandedOn)
{
    goToOther("50 60 300 200");
    m_other->say("switch waiter");
    ASSERT_TRUE(waitUntil([this] { return m_window->isVisible(); }));
    EXPECT_EQ(m_window->geometry(), QRect(50, 60, 300, 200));
    EXPECT_TRUE(isRecorded(kMANormal, m_window->geometry()));
}

TEST_F(WorkbenchControls, MarkIsSeenAndSpokenWithoutACount)
{
    const auto redPixels = [this] {
        const QImage picture =
            list().viewport()->grab(list().visualItemRect(item(kOther))).toImage();
        int count = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                count += picture.pixel(x, y) == Theme::kMarked ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(redPixels(), 0);
    m_other->say("account-mark 1");
    ASSERT_TRUE(
        waitUntil([this] { return item(kOther)->data(AccountDelegate::MarkRole).toInt() == 1; }));
    EXPECT_GT(redPixels(), 40);
    EXPECT_EQ(item(kOther)->data(Qt::AccessibleTextRole),
              QStringLiteral("cashier, Online, new messages"));
}
