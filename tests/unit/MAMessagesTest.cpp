#include "tests/support/Workbenches.h"

#include <limits>

using log4cplus::DEBUG_LOG_LEVEL;

namespace {

using Accounts = std::list<MAAccountInfo>;
using Texts = std::vector<std::string>;

class MAMessagesTest : public WorkbenchesFixture
{
protected:
    [[nodiscard]] std::string title(const Workbench& workbench) const
    {
        return QCoreApplication::applicationName().toStdString() + ' ' + workbench.pin;
    }
    void post(Workbench& from, const Workbench& to, std::uint64_t code, std::int64_t value)
    {
        from.manager.post("class " + to.pin, title(to), code, value);
    }
};

} // namespace

TEST_F(MAMessagesTest, MessageIsRegisteredOnceUnderItsFirstName)
{
    EXPECT_FALSE(a.manager.registerMessage(QString()));
    EXPECT_EQ(a.manager.messageId(), 0U);
    EXPECT_TRUE(a.manager.registerMessage(QStringLiteral("pavo-test-first")));
    const unsigned int number = a.manager.messageId();
    EXPECT_EQ(number, RegisterWindowMessageW(L"pavo-test-first"));
    EXPECT_TRUE(a.manager.registerMessage(QStringLiteral("pavo-test-second")));
    EXPECT_EQ(a.manager.messageId(), number);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(MAMessagesTest, ProcessesOfOneInstallationShareTheirMessage)
{
    joinAll();
    const QString name = QCoreApplication::applicationName() + QStringLiteral("_WM");
    EXPECT_EQ(a.manager.messageId(), RegisterWindowMessageW(name.toStdWString().c_str()));
    EXPECT_EQ(b.manager.messageId(), a.manager.messageId());
    a.manager.uninit();
    EXPECT_EQ(a.manager.messageId(), b.manager.messageId()) << "it stays registered";
}

TEST_F(MAMessagesTest, BeforeJoiningTheStoreCountsAsMerged)
{
    ASSERT_TRUE(a.manager.createShareMemory());
    for (const long code : {2L, 3L, 4L, 6L, 7L, 8L})
        EXPECT_TRUE(a.manager.handleNativeEvent(a.manager.messageId(), code, 1));
    EXPECT_EQ(a.calls,
              (Calls{"2  0 []", "3  0 []", "3  0 []", "4  0 []", "6  0 []", "7  0 []", "8  0 []"}));
}

TEST_F(MAMessagesTest, PostReachesTheWindowOfClassAndTitle)
{
    joinAll();
    post(a, b, 5, -3);
    EXPECT_EQ(received(), "a:; b: 5/-3; c:");
    EXPECT_EQ(b.calls, Calls{"login state -3"});
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "post process message, " + title(b) + ", param5"));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "handle Native Event 5, -3"));
}

TEST_F(MAMessagesTest, OwnTitleNoTitleAndUninitialisedPostNothing)
{
    joinAll();
    post(a, a, 3, 0);
    a.manager.post("class a", "", 3, 0);
    a.manager.setInitialized(false);
    post(a, b, 3, 0);
    a.manager.setInitialized(true);
    EXPECT_EQ(log.records().size(), 3U) << "one debug line each";
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "post process message, , param3"));
    EXPECT_EQ(received(), "a:; b:; c:");
}

TEST_F(MAMessagesTest, WindowThatIsNotThereIsReported)
{
    joinAll();
    for (const std::string title : {"gone", "\xff\xfe no text", "\xe5\xbc\xa0"}) {
        log.clear();
        a.manager.post("class b", title, 3, 0);
        EXPECT_EQ(complaints(), Texts{"ERROR not find window, " + title});
    }
    log.clear();
    a.manager.post("another class", title(b), 3, 0);
    EXPECT_EQ(complaints(), Texts{"ERROR not find window, " + title(b)});
}

TEST_F(MAMessagesTest, PostThatTheSystemRefusesIsReportedWithItsError)
{
    joinAll();
    int posted = 0;
    while (posted < 25000 && PostMessageA(b.window.handle(), a.manager.messageId(), 5, 0))
        ++posted;
    if (posted == 25000)
        GTEST_SKIP() << "this system's queues have no end";
    post(a, b, 5, 0);
    EXPECT_EQ(complaints(), Texts{"ERROR post process message failed, 1816"});
    ASSERT_TRUE(
        waitUntil([&] { return b.received.size() == static_cast<std::size_t>(posted); }, kBurstMs));
}

#ifdef _WIN32
TEST_F(MAMessagesTest, MessageThatTheSystemPostsForNobodyIsReportedWithItsError)
{
    joinAll();
    // One that carries a pointer is refused at once, on every Windows.
    a.manager.setMessageId(WM_COPYDATA);
    post(a, b, 5, 0);
    EXPECT_EQ(complaints(), Texts{"ERROR post process message failed, 1159"});
}
#endif

TEST_F(MAMessagesTest, ShowingAdoptsStateAndRectangleThatAreThere)
{
    joinAll();
    MASelectedAccount selected;
    Accounts accounts;
    selected.setWindowRect(QRect(1, 2, 3, 4), 1);
    selected.windowState = 3;
    a.manager.postLocal(1, selected, accounts);
    EXPECT_EQ(a.manager.windowState(), 3);
    EXPECT_EQ(a.manager.windowRect(), QRect(1, 2, 3, 4));
    for (const QSize size : {QSize(0, 5), QSize(5, 0), QSize(-1, 5), QSize(5, -1)}) {
        selected.windowState = 2;
        selected.w = size.width();
        selected.h = size.height();
        a.manager.postLocal(1, selected, accounts);
        EXPECT_EQ(a.manager.windowState(), 3);
        EXPECT_EQ(a.manager.windowRect(), QRect(1, 2, 3, 4));
    }
    // Whoever can write to the segment can write this: edges that no number can hold.
    constexpr int kMax = std::numeric_limits<int>::max();
    selected.w = selected.h = 2;
    selected.windowState = 1;
    for (const QPoint corner : {QPoint(kMax, 0), QPoint(0, kMax)}) {
        selected.x = corner.x();
        selected.y = corner.y();
        a.manager.postLocal(1, selected, accounts);
        EXPECT_EQ(a.manager.windowRect(), QRect(1, 2, 3, 4));
        EXPECT_EQ(a.manager.windowState(), 1) << "the state is one";
    }
    selected.x = selected.y = kMax - 1;
    selected.w = selected.h = 1;
    selected.windowState = 3;
    a.manager.postLocal(1, selected, accounts);
    const QRect furthest(kMax - 1, kMax - 1, 1, 1);
    EXPECT_EQ(a.manager.windowRect(), furthest);
    EXPECT_EQ(a.manager.windowState(), 3);
    selected.w = selected.h = 9;
    a.manager.postLocal(3, selected, accounts);
    EXPECT_EQ(a.manager.windowRect(), furthest) << "showing alone adopts";
    EXPECT_EQ(a.calls.size(), 9U);
}

TEST_F(MAMessagesTest, OnlyModeZeroIsPresentedAsTheOnlyAccount)
{
    joinAll();
    MASelectedAccount selected;
    selected.setAccount("x", "x", "x", "x");
    selected.mode = 2;
    Accounts accounts(2);
    accounts.front().pin = "y";
    accounts.back().pin = "z";
    a.manager.postLocal(3, selected, accounts);
    EXPECT_EQ(a.calls.back(), "3 x 0 [y z]");
    selected.mode = 0;
    a.manager.postLocal(3, selected, accounts);
    EXPECT_EQ(a.calls.back(), "3 a 0 [a]");
    EXPECT_EQ(selected.className, "class a");
    EXPECT_EQ(accounts.size(), 2U);
}
