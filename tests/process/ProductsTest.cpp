// Two products, which have an application name each, with workbenches side by side.

#include "tests/support/Workbenches.h"

namespace {

/// a and b are workbenches of one product, c is one of another product with the pin of a.
class ProductsTest : public WorkbenchesFixture
{
protected:
    ProductsTest()
    {
        EXPECT_TRUE(a.join() && b.join());
        const QString name = QCoreApplication::applicationName();
        QCoreApplication::setApplicationName(name + QStringLiteral("-other"));
        EXPECT_TRUE(c.manager.initManager("app", "a", "class c",
                                          (name + QStringLiteral(" c")).toStdString(), 1));
        QCoreApplication::setApplicationName(name);
        forget();
    }
};

} // namespace

TEST_F(ProductsTest, ListsAndFrontsAreTheirOwn)
{
    EXPECT_EQ(order(a.manager.accounts()), "a:0 b:2");
    EXPECT_EQ(order(c.manager.accounts()), "a:1");
    b.manager.switchToCurrentPin();
    c.manager.changeMergeMode(0, false);
    EXPECT_EQ(a.manager.selected().pin, "b");
    EXPECT_EQ(a.manager.selected().mode, 1);
    EXPECT_EQ(c.manager.selected().title, c.manager.own().title);
    EXPECT_EQ(c.manager.selected().mode, 0);
    EXPECT_EQ(a.manager.quitCurrentAccount(), 1);
    EXPECT_EQ(order(a.manager.accounts()), "");
    EXPECT_EQ(order(b.manager.accounts()), "b:2");
    EXPECT_EQ(order(c.manager.accounts()), "a:1");
}

TEST_F(ProductsTest, LocksAreTheirOwn)
{
    const MAMutex lock(&a.manager.memory());
    c.manager.changeLoginState(5);
    EXPECT_EQ(c.manager.accounts().front().loginState, 5);
}

TEST_F(ProductsTest, MessagesAreTheirOwn)
{
    EXPECT_NE(a.manager.messageId(), c.manager.messageId());
    a.manager.switchLoginState(5);
    EXPECT_EQ(received(), "a:; b: 5/5; c:");
    EXPECT_EQ(b.calls, Calls{"login state 5"});
    EXPECT_EQ(c.calls, Calls{});
}

TEST_F(ProductsTest, MessageThatReachesAWindowOfTheOtherProductIsIgnored)
{
    // Windows are found by class and title, which two products may have in common.
    std::list<MAAccountInfo> accounts = a.manager.accounts();
    accounts.back().className = "class c";
    accounts.back().title = c.manager.own().title;
    ASSERT_TRUE(a.manager.writeAll(accounts));
    a.manager.switchLoginState(5);
    EXPECT_EQ(received(), "a:; b:; c:");
    EXPECT_EQ(c.calls, Calls{});
    EXPECT_TRUE(complaints().empty()) << "it has been posted";
}
