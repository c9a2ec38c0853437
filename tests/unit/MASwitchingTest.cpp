#include "tests/support/Workbenches.h"

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;

namespace {

using Texts = std::vector<std::string>;

class MASwitchingTest : public WorkbenchesFixture
{
protected:
    /// "pin state x,y wxh" of the selected account as stored.
    std::string front()
    {
        const MASelectedAccount s = a.manager.selected();
        return s.pin + ' ' + std::to_string(s.windowState) + ' ' + std::to_string(s.x) + ',' +
               std::to_string(s.y) + ' ' + std::to_string(s.w) + 'x' + std::to_string(s.h);
    }
    void setStoredState(int state)
    {
        MASelectedAccount selected = a.manager.selected();
        selected.windowState = state;
        ASSERT_TRUE(a.manager.writeSelected(selected));
    }
};

} // namespace

TEST_F(MASwitchingTest, SwitchMovesTheWindowFromProcessToProcess)
{
    joinAll();
    a.manager.windowStateChanged(1, QRect(10, 20, 300, 400));
    forget();
    EXPECT_TRUE(a.manager.switchToAccount(b.listed()));
    EXPECT_EQ(front(), "a 1 10,20 300x400") << "the target enters itself";
    EXPECT_EQ(received(), "a: 2/0; b: 1/0; c:");
    EXPECT_EQ(front(), "b 1 10,20 300x400");
    EXPECT_EQ(a.calls, Calls{"2 b 1 []"});
    EXPECT_EQ(b.calls, Calls{"1 b 1 [a b c]"});
    EXPECT_EQ(b.manager.windowRect(), QRect(10, 20, 300, 400));
    EXPECT_TRUE(b.manager.isSelectedAccount());
    EXPECT_FALSE(a.manager.isSelectedAccount());
}

TEST_F(MASwitchingTest, SwitchNeedsAPinAndAStore)
{
    EXPECT_FALSE(a.manager.switchToAccount(b.listed()));
    joinAll();
    const std::string before = allBytes();
    MAAccountInfo nobody;
    nobody.title = b.listed().title;
    forget();
    EXPECT_FALSE(a.manager.switchToAccount(nobody));
    EXPECT_TRUE(log.records().empty());
    EXPECT_EQ(allBytes(), before);
    a.manager.memory().detach();
    EXPECT_FALSE(a.manager.switchToAccount(b.manager.own()));
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MASwitchingTest, SeparateSwitchPostsNothing)
{
    joinSeparately();
    EXPECT_TRUE(a.manager.switchToAccount(b.listed()));
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MASwitchingTest, TakingTheFrontClearsTheMark)
{
    joinAll();
    b.manager.changeCurrentUnread(3);
    EXPECT_EQ(b.listed().unreadMark, 1);
    forget();
    EXPECT_TRUE(b.manager.switchToCurrentPin());
    EXPECT_EQ(b.listed().unreadMark, 0);
    EXPECT_EQ(b.listed().unread, 3);
    EXPECT_EQ(b.manager.own().unreadMark, 0);
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "switch to account, " + b.manager.own().title));
    EXPECT_EQ(received(), "a: 2/0; b:; c:");
}

TEST_F(MASwitchingTest, TakingTheFrontAgainTellsNobodyElse)
{
    joinAll();
    EXPECT_TRUE(a.manager.switchToCurrentPin());
    EXPECT_EQ(received(), "a:; b:; c:");
    EXPECT_EQ(a.calls, Calls{"1 a 0 [a b c]"});
}

TEST_F(MASwitchingTest, PopUpShowsTheFrontAccount)
{
    joinAll();
    EXPECT_TRUE(a.manager.popupMainWindow(true));
    EXPECT_EQ(a.calls, Calls{"1 a 0 [a b c]"});
    EXPECT_EQ(received(), "a:; b:; c:");
    forget();
    EXPECT_TRUE(b.manager.popupMainWindow(true));
    EXPECT_EQ(received(), "a: 1/0; b:; c:");
    EXPECT_EQ(front().front(), 'a');
    EXPECT_TRUE(b.calls.empty());
}

TEST_F(MASwitchingTest, PopUpOfAMinimisedHiddenOrSeparateWindowTakesTheFront)
{
    joinAll();
    for (const int state : {2, 4}) {
        a.manager.switchToCurrentPin();
        setStoredState(state);
        forget();
        EXPECT_TRUE(b.manager.popupMainWindow(true));
        EXPECT_EQ(received(), "a: 2/0; b:; c:");
        EXPECT_EQ(front().front(), 'b');
    }
    b.manager.changeMergeMode(0, false);
    forget();
    EXPECT_TRUE(c.manager.popupMainWindow(true));
    EXPECT_EQ(c.calls, Calls{"1 c 4 [c]"});
}

TEST_F(MASwitchingTest, PopUpBringsBackOnlyWhatIsHidden)
{
    joinAll();
    for (const int state : {0, 1, 2, 3}) {
        setStoredState(state);
        EXPECT_TRUE(a.manager.popupMainWindow(false));
        EXPECT_TRUE(b.manager.popupMainWindow(false));
    }
    EXPECT_EQ(received(), "a:; b:; c:");
    EXPECT_TRUE(a.calls.empty());
    setStoredState(4);
    EXPECT_TRUE(a.manager.popupMainWindow(false));
    EXPECT_EQ(a.calls, Calls{"7 a 4 [a b c]"});
    forget();
    EXPECT_TRUE(b.manager.popupMainWindow(false));
    EXPECT_EQ(received(), "a: 7/0; b:; c:");
    EXPECT_EQ(a.calls, Calls{"7 a 4 []"});
}

TEST_F(MASwitchingTest, PopUpOfAHiddenSeparateWindowIsItsOwnAffair)
{
    joinSeparately();
    EXPECT_TRUE(b.manager.popupMainWindow(false));
    EXPECT_TRUE(b.calls.empty());
    b.manager.windowStateChanged(4, QRect());
    EXPECT_TRUE(b.manager.popupMainWindow(false));
    EXPECT_EQ(b.calls, Calls{"7 b 0 [b]"});
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MASwitchingTest, PopUpComparesThePinAlone)
{
    joinAll();
    MASelectedAccount selected = a.manager.selected();
    selected.appID = "other";
    ASSERT_TRUE(a.manager.writeSelected(selected));
    EXPECT_TRUE(a.manager.popupMainWindow(true));
    EXPECT_EQ(a.calls, Calls{"1 a 0 [a b c]"});
}

TEST_F(MASwitchingTest, VisibleIsTheSelectedWindowInMergedMode)
{
    EXPECT_FALSE(b.manager.checkWindowVisible());
    joinAll();
    EXPECT_FALSE(b.manager.checkWindowVisible());
    a.window.setVisible(true);
    EXPECT_TRUE(b.manager.checkWindowVisible());
    b.manager.changeMergeMode(0, false);
    EXPECT_FALSE(b.manager.checkWindowVisible());
    b.manager.changeMergeMode(1, false);
    EXPECT_FALSE(a.manager.checkWindowVisible()) << "b is in front now";
    MASelectedAccount selected = a.manager.selected();
    selected.title = "gone";
    ASSERT_TRUE(a.manager.writeSelected(selected));
    EXPECT_FALSE(a.manager.checkWindowVisible());
    a.manager.memory().detach();
    EXPECT_FALSE(a.manager.checkWindowVisible());
}

TEST_F(MASwitchingTest, ToggleAndHidingAreReportedToTheSelectedAccount)
{
    joinAll();
    b.manager.switchShowState();
    EXPECT_TRUE(log.has(INFO_LOG_LEVEL, "MAManager::switchShowState enter"));
    EXPECT_TRUE(log.has(INFO_LOG_LEVEL, "MAManager::switchShowState leave"));
    b.manager.switchedHide();
    EXPECT_TRUE(log.has(INFO_LOG_LEVEL, "MAManager::switchedHide enter"));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "b, window state, 4"));
    EXPECT_TRUE(log.has(INFO_LOG_LEVEL, "MAManager::switchedHide leave"));
    EXPECT_EQ(received(), "a: 8/0 6/0; b:; c:");
    EXPECT_EQ(a.calls, (Calls{"8 a 0 [a b c]", "6 a 0 [a b c]"}));
    EXPECT_EQ(b.manager.windowState(), 4);
}

TEST_F(MASwitchingTest, ToggleAndHidingDoNotLeaveWithoutAStore)
{
    a.manager.switchShowState();
    a.manager.switchedHide();
    EXPECT_EQ(a.manager.windowState(), 4);
    Texts lines;
    for (const LogRecord& record : log.records())
        lines.push_back(record.text);
    EXPECT_EQ(lines, (Texts{"MAManager::switchShowState enter", "MAManager::switchedHide enter",
                            ", window state, 4"}));
}

TEST_F(MASwitchingTest, RectangleIsRememberedUnlessTheWindowIsStillMaximised)
{
    MAManagerProbe& manager = a.manager;
    EXPECT_FALSE(manager.updateSize(1, QRect()));
    EXPECT_TRUE(manager.updateSize(1, QRect(1, 2, 30, 40)));
    EXPECT_FALSE(manager.updateSize(1, QRect(1, 2, 30, 40)));
    EXPECT_TRUE(manager.updateSize(1, QRect(2, 2, 30, 40)));
    EXPECT_TRUE(log.records().empty());
    EXPECT_FALSE(manager.updateSize(2, QRect(5, 6, 7, 8)));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, ", window max w, -1, h, -1"));
    EXPECT_FALSE(manager.updateSize(3, QRect(0, 0, 1000, 800)));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, ", window max w, 1000, h, 800"));
    EXPECT_FALSE(manager.updateSize(1, QRect(0, 0, 1000, 800)));
    EXPECT_FALSE(manager.updateSize(1, QRect(0, 0, 1200, 900)));
    EXPECT_EQ(manager.windowRect(), QRect(2, 2, 30, 40));
    EXPECT_TRUE(manager.updateSize(1, QRect(0, 0, 999, 900)));
    EXPECT_TRUE(manager.updateSize(1, QRect(0, 0, 1200, 799)));
    EXPECT_FALSE(manager.updateSize(4, QRect(9, 9, 9, 9)));
    EXPECT_EQ(manager.windowRect(), QRect(0, 0, 1200, 799));
}

TEST_F(MASwitchingTest, OnlyTheFrontProcessWritesItsGeometry)
{
    a.manager.windowStateChanged(1, QRect(1, 2, 3, 4));
    EXPECT_TRUE(a.manager.windowRect().isNull()) << "nothing before joining";
    joinAll();
    a.manager.windowStateChanged(1, QRect(1, 2, 30, 40));
    EXPECT_EQ(front(), "a 1 1,2 30x40");
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "a, window state, 1"));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "a, states 1, w, 30, h, 40"));
    b.manager.windowStateChanged(3, QRect(0, 0, 500, 500));
    EXPECT_EQ(b.manager.windowState(), 3);
    EXPECT_EQ(front(), "a 1 1,2 30x40");
    a.manager.windowStateChanged(2, QRect(7, 7, 7, 7));
    EXPECT_EQ(front(), "a 2 1,2 30x40") << "a minimised window returns to where it was";
    log.clear();
    a.manager.windowStateChanged(2, QRect());
    EXPECT_TRUE(log.records().empty()) << "nothing changed";
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MASwitchingTest, MergingBringsTheProcessThatMergesToTheFront)
{
    joinSeparately();
    b.manager.windowStateChanged(1, QRect(1, 2, 30, 40));
    forget();
    b.manager.changeMergeMode(1, true);
    EXPECT_EQ(front(), "b 1 1,2 30x40");
    EXPECT_EQ(a.manager.selected().mode, 1);
    EXPECT_EQ(received(), "a: 2/0; b:; c: 2/0");
    EXPECT_EQ(b.calls, Calls{"1 b 1 [a b c]"});
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "change merge, 1"));
}

TEST_F(MASwitchingTest, SeparatingShowsEveryWindow)
{
    joinAll();
    b.manager.changeMergeMode(0, true);
    EXPECT_EQ(b.calls, Calls{"1 b 0 [b]"});
    EXPECT_EQ(received(), "a: 1/0; b:; c: 1/0");
    EXPECT_EQ(a.calls, Calls{"1 a 0 [a]"});
    EXPECT_EQ(c.calls, Calls{"1 c 0 [c]"});
}

TEST_F(MASwitchingTest, ModeThatIsStoredAlreadyTellsNobody)
{
    joinAll();
    a.manager.changeMergeMode(1, true);
    EXPECT_TRUE(a.calls.empty());
    a.manager.changeMergeMode(0, false);
    EXPECT_TRUE(a.calls.empty());
    forget();
    b.manager.changeMergeMode(0, true);
    EXPECT_TRUE(b.calls.empty());
    EXPECT_EQ(b.manager.mergeMode(), 0);
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MASwitchingTest, SelectedAccountIsReadAndLogged)
{
    MASelectedAccount selected;
    selected.pin = "before";
    selected.w = 7;
    EXPECT_FALSE(a.manager.selectedAccount(selected));
    EXPECT_EQ(log.records().front().text, "SelectedAccount before, w, 7, h, 0");
    joinAll();
    a.manager.windowStateChanged(1, QRect(1, 2, 30, 40));
    EXPECT_TRUE(b.manager.selectedAccount(selected));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "SelectedAccount a, w, 30, h, 40"));
}

TEST_F(MASwitchingTest, FrontAccountThatQuitsBringsItsNeighbourUp)
{
    joinAll();
    EXPECT_EQ(a.manager.quitCurrentAccount(), 1);
    EXPECT_EQ(received(), "a: 2/0; b: 1/0; c:");
    EXPECT_EQ(b.manager.selected().pin, "b");
    EXPECT_EQ(b.calls, Calls{"1 b 1 [b c]"});
    EXPECT_EQ(c.manager.quitCurrentAccount(), 1);
    EXPECT_EQ(received(), "a: 2/0; b: 1/0 3/0; c:");
    EXPECT_EQ(b.calls.back(), "3 b 1 [b]");
}
