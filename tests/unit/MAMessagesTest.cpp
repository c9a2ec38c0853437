#include "tests/support/Workbenches.h"

#include <functional>

using log4cplus::DEBUG_LOG_LEVEL;

#include <limits>

namespace {

using Accounts = std::list<MAAccountInfo>;
using Texts = std::vector<std::string>;

class MAMessagesTest : public WorkbenchesFixture
{
protected:
    bool handle(Workbench& workbench, long code, long value = 0)
    {
        return workbench.manager.handleNativeEvent(workbench.manager.messageId(), code, value);
    }
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

TEST_F(MAMessagesTest, OtherMessagesAreLeftAlone)
{
    joinAll();
    EXPECT_FALSE(a.manager.handleNativeEvent(a.manager.messageId() + 1, 3, 0));
    EXPECT_FALSE(a.manager.handleNativeEvent(0, 3, 0));
    EXPECT_TRUE(log.records().empty());
    EXPECT_TRUE(a.calls.empty());
}

TEST_F(MAMessagesTest, BeforeRegistrationMessageZeroIsTaken)
{
    EXPECT_TRUE(a.manager.handleNativeEvent(0, 3, 5));
    EXPECT_EQ(a.calls, Texts{"3  0 []"});
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "handle Native Event 3, 5"));
}

TEST_F(MAMessagesTest, UnknownCodesAreConsumedWithAWarning)
{
    joinAll();
    for (const long code : {0L, 9L, -1L, 2147483647L, -2147483647L}) {
        log.clear();
        EXPECT_TRUE(handle(a, code, 7));
        EXPECT_EQ(log.complaints(),
                  Texts{"WARN unprocessed cross process messages " + std::to_string(code) + ", 7"});
    }
    EXPECT_TRUE(a.calls.empty());
}

TEST_F(MAMessagesTest, EachCodeTellsTheObserverWhatItNeeds)
{
    joinAll();
    const std::pair<long, Calls> expected[] = {
        {2, {"2 a 0 []"}},      {3, {"3 a 0 [a b c]"}}, {4, {"3 a 0 [a b c]"}},
        {6, {"6 a 0 [a b c]"}}, {7, {"7 a 0 []"}},      {8, {"8 a 0 [a b c]"}},
    };
    for (const auto& [code, calls] : expected) {
        b.calls.clear();
        EXPECT_TRUE(handle(b, code));
        EXPECT_EQ(b.calls, calls);
    }
    EXPECT_TRUE(log.complaints().empty());
}

TEST_F(MAMessagesTest, OnlyOneAsValueTellsOfTheMark)
{
    joinAll();
    handle(b, 4, 1);
    EXPECT_EQ(b.calls, (Calls{"3 a 0 [a b c]", "4 a 0 [a b c]"}));
    for (const long value : {0L, 2L, -1L}) {
        b.calls.clear();
        handle(b, 4, value);
        EXPECT_EQ(b.calls, Calls{"3 a 0 [a b c]"}) << value;
    }
}

TEST_F(MAMessagesTest, SeparateWindowsAreToldOfTheFrontAndTheLoginStateOnly)
{
    joinAll();
    a.manager.changeMergeMode(0, false);
    forget();
    for (const long code : {2L, 3L, 4L, 6L, 7L, 8L})
        EXPECT_TRUE(handle(b, code, 1));
    EXPECT_TRUE(b.calls.empty());
    handle(b, 1);
    handle(b, 5, 3);
    EXPECT_EQ(b.calls, (Calls{"1 b 0 [b]", "login state 3"}));
    EXPECT_EQ(a.manager.selected().pin, "b");
}

TEST_F(MAMessagesTest, WhatCannotBeReadCountsAsMerged)
{
    ASSERT_TRUE(a.manager.createShareMemory());
    for (const long code : {2L, 3L, 4L, 6L, 7L, 8L})
        EXPECT_TRUE(handle(a, code, 1));
    EXPECT_EQ(a.calls,
              (Calls{"2  0 []", "3  0 []", "3  0 []", "4  0 []", "6  0 []", "7  0 []", "8  0 []"}));
}

TEST_F(MAMessagesTest, WithoutObserverNothingIsTold)
{
    joinAll();
    b.manager.removeObserver();
    for (long code = 1; code <= 8; ++code)
        EXPECT_TRUE(handle(b, code, 1));
    EXPECT_TRUE(b.calls.empty());
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
        EXPECT_EQ(log.complaints(), Texts{"ERROR not find window, " + title});
    }
    log.clear();
    a.manager.post("another class", title(b), 3, 0);
    EXPECT_EQ(log.complaints(), Texts{"ERROR not find window, " + title(b)});
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
    EXPECT_EQ(log.complaints(), Texts{"ERROR post process message failed, 1816"});
    ASSERT_TRUE(waitUntil([&] { return b.received.size() == static_cast<std::size_t>(posted); }));
}

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
    for (const QSize size : {QSize(0, 5), QSize(5, 0), QSize(-1, 5)}) {
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
    for (const QPoint corner : {QPoint(kMax, 0), QPoint(0, kMax)}) {
        selected.x = corner.x();
        selected.y = corner.y();
        a.manager.postLocal(1, selected, accounts);
        EXPECT_EQ(a.manager.windowRect(), QRect(1, 2, 3, 4));
    }
    selected.w = selected.h = 9;
    a.manager.postLocal(3, selected, accounts);
    EXPECT_EQ(a.manager.windowRect(), QRect(1, 2, 3, 4)) << "showing alone adopts";
    EXPECT_EQ(a.calls.size(), 7U);
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

TEST_F(MAMessagesTest, EmptyCallbacksFailAsFunctionsDo)
{
    joinAll();
    a.manager.addObserver(new MAObserver);
    EXPECT_THROW(handle(a, 3), std::bad_function_call);
    EXPECT_THROW(handle(a, 5), std::bad_function_call);
    EXPECT_EQ(a.manager.loginAccountCount(), 3) << "nothing stays locked";
}

TEST_F(MAMessagesTest, CallbackMayRemoveItsObserver)
{
    joinAll();
    auto* observer = new MAObserver;
    const auto token = std::make_shared<std::string>("still there");
    std::string seen;
    observer->messageCallback = [this, token, &seen](int, MASelectedAccount&, Accounts&) {
        a.manager.removeObserver();
        seen = *token;
    };
    a.manager.addObserver(observer);
    EXPECT_TRUE(handle(a, 4, 1));
    EXPECT_EQ(seen, "still there");
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(MAMessagesTest, ObserverIsCalledOutsideTheLock)
{
    joinAll();
    auto* observer = new MAObserver;
    int count = 0;
    observer->messageCallback = [&](int, MASelectedAccount&, Accounts&) {
        count = b.manager.loginAccountCount();
    };
    a.manager.addObserver(observer);
    handle(a, 3);
    EXPECT_EQ(count, 3);
}
