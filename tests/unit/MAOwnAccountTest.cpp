#include "tests/support/Workbenches.h"

#include <iterator>

// What a process says of its own account, and the order of them all.

namespace {

using MAOwnAccountTest = WorkbenchesFixture;

} // namespace

TEST_F(MAOwnAccountTest, SkinAndLoginStateAreStoredAndTold)
{
    joinAll();
    b.manager.changeCurrentSkin(5);
    EXPECT_EQ(b.listed().skin, 5);
    b.manager.changeLoginState(6);
    EXPECT_EQ(b.listed().loginState, 6);
    EXPECT_EQ(b.calls, (Calls{"3 a 0 [a b c]", "3 a 0 [a b c]"}));
    EXPECT_EQ(received(), "a: 3/0 3/0; b:; c:");
    forget();
    b.manager.changeCurrentSkin(5);
    b.manager.changeLoginState(6);
    EXPECT_TRUE(log.records().empty());
    EXPECT_TRUE(b.calls.empty());
    a.manager.changeMergeMode(0, false);
    forget();
    b.manager.changeCurrentSkin(1);
    EXPECT_EQ(b.calls, Calls{"3 b 0 [b]"});
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MAOwnAccountTest, OfEntriesOfOneAccountTheFirstIsChanged)
{
    joinAll();
    std::list<MAAccountInfo> list(3);
    list.front().pin = "other";
    for (MAAccountInfo* account : {&*std::next(list.begin()), &list.back()}) {
        account->appID = "app";
        account->pin = "b";
    }
    ASSERT_TRUE(b.manager.writeAll(list));
    b.manager.changeCurrentSkin(7);
    b.manager.changeLoginState(8);
    std::string stored;
    for (const MAAccountInfo& account : b.manager.accounts())
        stored += std::to_string(account.skin) + ',' + std::to_string(account.loginState) + ' ';
    EXPECT_EQ(stored, "0,0 7,8 0,0 ");
}

TEST_F(MAOwnAccountTest, SkinIsToldWithoutAStore)
{
    a.manager.changeCurrentSkin(5);
    EXPECT_EQ(a.calls, Calls{"3  0 []"});
    EXPECT_EQ(a.manager.own().skin, 5);
}

TEST_F(MAOwnAccountTest, MoreUnreadMarksAnAccountBehindTheFront)
{
    joinAll();
    b.manager.changeCurrentUnread(3);
    EXPECT_EQ(b.listed().unread, 3);
    EXPECT_EQ(b.listed().unreadMark, 1);
    EXPECT_EQ(received(), "a: 4/1; b:; c:");
    EXPECT_EQ(a.calls, (Calls{"3 a 0 [a b c]", "4 a 0 [a b c]"}));
    EXPECT_TRUE(b.calls.empty());
    forget();
    b.manager.changeCurrentUnread(3);
    EXPECT_EQ(received(), "a:; b:; c:");
    b.manager.changeCurrentUnread(1);
    EXPECT_EQ(b.listed().unread, 1);
    EXPECT_EQ(b.listed().unreadMark, 1) << "less unread leaves the mark";
    EXPECT_EQ(received(), "a: 4/0; b:; c:");
    EXPECT_EQ(a.calls, Calls{"3 a 0 [a b c]"});
}

TEST_F(MAOwnAccountTest, FrontAccountNeverKeepsAMark)
{
    joinAll();
    a.manager.changeCurrentUnread(3);
    EXPECT_EQ(a.listed().unread, 3);
    EXPECT_EQ(a.listed().unreadMark, 0);
    EXPECT_EQ(a.manager.own().unreadMark, 0);
    EXPECT_EQ(a.calls, Calls{"3 a 0 [a b c]"});
    a.manager.changeCurrentUnreadMark(1);
    EXPECT_EQ(a.listed().unreadMark, 0);
    EXPECT_EQ(a.manager.own().unreadMark, 0);
    EXPECT_EQ(a.calls.size(), 1U);
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MAOwnAccountTest, SeparateUnreadIsToldToTheOwnObserver)
{
    joinSeparately();
    b.manager.changeCurrentUnread(2);
    EXPECT_EQ(b.calls, Calls{"3 b 0 [b]"});
    EXPECT_EQ(b.listed().unreadMark, 1);
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MAOwnAccountTest, UnreadStaysInMemoryWithoutAStore)
{
    a.manager.changeCurrentUnread(2);
    EXPECT_EQ(a.manager.own().unread, 2);
    EXPECT_EQ(a.manager.own().unreadMark, 1);
    EXPECT_TRUE(a.calls.empty());
    EXPECT_TRUE(log.records().empty());
    a.manager.changeCurrentUnreadMark(0);
    EXPECT_EQ(a.manager.own().unreadMark, 0);
}

TEST_F(MAOwnAccountTest, SetMarkIsReportedAndClearedMarkIsNot)
{
    joinAll();
    b.manager.changeCurrentUnreadMark(1);
    EXPECT_EQ(b.listed().unreadMark, 1);
    EXPECT_EQ(received(), "a: 4/1; b:; c:");
    forget();
    b.manager.changeCurrentUnreadMark(1);
    b.manager.changeCurrentUnreadMark(0);
    EXPECT_EQ(b.listed().unreadMark, 0);
    EXPECT_EQ(received(), "a:; b:; c:");
    EXPECT_TRUE(b.calls.empty());
}

TEST_F(MAOwnAccountTest, LoginStateGoesToEveryOtherProcessInEitherMode)
{
    EXPECT_FALSE(a.manager.switchLoginState(4));
    joinSeparately();
    EXPECT_TRUE(a.manager.switchLoginState(4));
    EXPECT_EQ(received(), "a:; b: 5/4; c: 5/4");
    EXPECT_EQ(b.calls, Calls{"login state 4"});
}

TEST_F(MAOwnAccountTest, SortingPutsTheRestBehindInTheirOrder)
{
    EXPECT_FALSE(a.manager.sortAllAccount({{"a", 0}}));
    joinAll();
    EXPECT_TRUE(a.manager.sortAllAccount({{"c", 0}, {"nobody", 1}}));
    EXPECT_EQ(order(a.manager.accounts()), "c:0 a:2 b:3");
    EXPECT_TRUE(a.manager.sortAllAccount({}));
    EXPECT_EQ(order(a.manager.accounts()), "c:0 a:1 b:2");
    EXPECT_TRUE(a.manager.sortAllAccount({{"a", 5}, {"b", 5}, {"c", 5}}));
    EXPECT_EQ(order(a.manager.accounts()), "c:5 a:5 b:5") << "equal places keep their order";
    EXPECT_TRUE(a.manager.sortAllAccount({{"a", -1}}));
    EXPECT_EQ(order(a.manager.accounts()), "a:-1 c:1 b:2");
}

TEST_F(MAOwnAccountTest, SortingAnEmptyStoreWritesNothing)
{
    joinAll();
    fill('\xAA');
    EXPECT_TRUE(a.manager.sortAllAccount({{"a", 0}}));
    EXPECT_EQ(allBytes(), std::string(static_cast<std::size_t>(segmentSize()), '\xAA'));
}
