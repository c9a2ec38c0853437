#include "tests/support/AccountsFixture.h"
#include "tests/support/Memory.h"
#include "tests/support/SegmentBlocker.h"

#include <thread>

using log4cplus::DEBUG_LOG_LEVEL;

namespace {

using Accounts = std::list<MAAccountInfo>;
using Texts = std::vector<std::string>;

class MAManagerTest : public AccountsFixture
{
protected:
    [[nodiscard]] std::string postTo(const std::string& title, int code) const
    {
        return "post process message, " + title + ", param" + std::to_string(code);
    }
    [[nodiscard]] QString segmentKey() const
    {
        return QCoreApplication::applicationName() + QStringLiteral("_MEM");
    }
};

} // namespace

TEST_F(MAManagerTest, ThereIsOneInstanceWhoeverAsks)
{
    std::vector<std::shared_ptr<MAManager>> seen(8);
    std::vector<std::thread> threads;
    threads.reserve(seen.size());
    for (auto& instance : seen)
        threads.emplace_back([&instance] { instance = MAManager::Instance(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& instance : seen)
        EXPECT_EQ(instance, MAManager::Instance());
    EXPECT_NE(MAManager::Instance(), nullptr);
}

TEST_F(MAManagerTest, StartsUninitialisedAndOutsideTheSegment)
{
    MAManagerProbe manager;
    EXPECT_FALSE(manager.isInit());
    EXPECT_EQ(manager.scratchBuffer(), nullptr);
    EXPECT_FALSE(manager.memory().isAttached());
    EXPECT_EQ(manager.observer(), nullptr);
    EXPECT_EQ(manager.messageId(), 0U);
    EXPECT_EQ(manager.mergeMode(), 1);
    EXPECT_EQ(manager.windowState(), 1);
    EXPECT_TRUE(manager.windowRect().isNull());
    EXPECT_EQ(manager.currentPin(), "");
    EXPECT_EQ(manager.loginAccountCount(), 0);
    EXPECT_TRUE(manager.isSelectedAccount());
    EXPECT_EQ(manager.quitCurrentAccount(), -1);
}

TEST_F(MAManagerTest, FirstProcessEntersTheListAndTheFront)
{
    MAManagerProbe manager;
    ASSERT_TRUE(manager.initManager("app", "p", "class", "title", 4));
    EXPECT_TRUE(manager.isInit());
    EXPECT_NE(manager.scratchBuffer(), nullptr);
    EXPECT_EQ(manager.currentPin(), "p");
    EXPECT_EQ(manager.loginAccountCount(), 1);
    EXPECT_TRUE(manager.isSelectedAccount());
    MAAccountInfo own;
    own.setAccount("app", "p", "class", "title", 4, 0);
    own.idx = 1;
    EXPECT_EQ(MAAccountInfo::toJSON(manager.accounts()), MAAccountInfo::toJSON({own}));
    MASelectedAccount selected;
    selected.setAccount("app", "p", "class", "title");
    EXPECT_EQ(manager.selected().toJSON(), selected.toJSON());
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "init ma manager, pin app,p,class,title"));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, "multi account init success, title, mid " +
                                             std::to_string(manager.messageId())));
    EXPECT_TRUE(complaints().empty());
    const LogRecord record = log.records().front();
    EXPECT_NE(record.function.find("MAManager::initManager"), std::string::npos);
    EXPECT_EQ(record.file, "MultiAccount/MAManager.cpp");
}

TEST_F(MAManagerTest, NewcomersLeaveAGapBehindTheRenumberedOnes)
{
    MAManagerProbe p;
    MAManagerProbe q;
    MAManagerProbe r;
    ASSERT_TRUE(p.join("p"));
    EXPECT_EQ(order(p.accounts()), "p:1");
    ASSERT_TRUE(q.join("q"));
    EXPECT_EQ(order(p.accounts()), "p:0 q:2");
    ASSERT_TRUE(r.join("r"));
    EXPECT_EQ(order(p.accounts()), "p:0 q:1 r:3");
    EXPECT_EQ(p.selected().pin, "p");
    EXPECT_TRUE(p.isSelectedAccount());
    EXPECT_FALSE(q.isSelectedAccount());
    EXPECT_EQ(r.loginAccountCount(), 3);
}

TEST_F(MAManagerTest, ListedAccountIsRefreshedInstead)
{
    MAManagerProbe keeper;
    ASSERT_TRUE(keeper.join("keeper"));
    MAAccountInfo crashed;
    crashed.setAccount("app", "own", "old class", "old title", 1, 5);
    crashed.idx = 9;
    crashed.unreadMark = 1;
    crashed.loginState = 6;
    ASSERT_TRUE(keeper.writeAll({crashed, keeper.own(), crashed}));
    MAManagerProbe manager;
    ASSERT_TRUE(manager.initManager("app", "own", "class", "title", 3));
    const Accounts accounts = manager.accounts();
    ASSERT_EQ(accounts.size(), 3U);
    for (const MAAccountInfo* account : {&accounts.front(), &accounts.back()}) {
        EXPECT_EQ(account->className, "old class");
        EXPECT_EQ(account->title, "title");
        EXPECT_EQ(account->skin, 3);
        EXPECT_EQ(account->unread, 0);
        EXPECT_EQ(account->unreadMark, 0);
        EXPECT_EQ(account->loginState, 6);
    }
    EXPECT_EQ(order(accounts), "own:0 keeper:1 own:2");
}

TEST_F(MAManagerTest, EqualPinOfAnotherApplicationIsAnotherAccount)
{
    MAManagerProbe first;
    MAManagerProbe second;
    ASSERT_TRUE(first.initManager("a", "pin", "c", "t1", 1));
    ASSERT_TRUE(second.initManager("b", "pin", "c", "t2", 1));
    EXPECT_EQ(first.loginAccountCount(), 2);
    EXPECT_TRUE(first.isSelectedAccount());
    EXPECT_FALSE(second.isSelectedAccount());
}

TEST_F(MAManagerTest, EmptyPinOrApplicationIsWarnedOfAndTakenAllTheSame)
{
    MAManagerProbe manager;
    EXPECT_TRUE(manager.initManager("app", "", "class", "title", 1));
    EXPECT_EQ(complaints(), Texts{"WARN init ma error, pin:"});
    EXPECT_EQ(manager.loginAccountCount(), 1);
    MAManagerProbe other;
    EXPECT_TRUE(other.initManager("", "pin", "class", "title", 1));
    EXPECT_EQ(complaints().back(), "WARN init ma error, pin:pin");
    EXPECT_EQ(other.selected().pin, "pin") << "no account with a pin had been selected";
}

TEST_F(MAManagerTest, InitialisingAgainStaysInTheList)
{
    MAManagerProbe manager;
    ASSERT_TRUE(manager.join("p"));
    ASSERT_TRUE(manager.initManager("app", "p", "class", "new title", 8));
    const Accounts accounts = manager.accounts();
    ASSERT_EQ(accounts.size(), 1U);
    EXPECT_EQ(accounts.front().title, "new title");
    EXPECT_EQ(accounts.front().skin, 8);
    EXPECT_EQ(accounts.front().idx, 0);
}

TEST_F(MAManagerTest, OwnModeBecomesEverybodysWhenItDiffers)
{
    MAManagerProbe first;
    ASSERT_TRUE(first.join("p"));
    MAManagerProbe second;
    second.changeMergeMode(0, false);
    EXPECT_EQ(first.selected().mode, 1) << "nothing is stored before joining";
    ASSERT_TRUE(second.join("q"));
    EXPECT_EQ(first.selected().mode, 0);
    EXPECT_TRUE(first.isSelectedAccount());
    EXPECT_TRUE(second.isSelectedAccount()) << "each shows its own window";
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, postTo("title p", 1)));
}

TEST_F(MAManagerTest, FirstProcessBringsItsMode)
{
    MAManagerProbe manager;
    manager.changeMergeMode(0, false);
    ASSERT_TRUE(manager.join("p"));
    EXPECT_EQ(manager.selected().mode, 0);
    EXPECT_EQ(log.count(DEBUG_LOG_LEVEL, "change merge, 0"), 1);
}

TEST_F(MAManagerTest, WithoutItsMessageItNeverTouchesTheSegment)
{
    QCoreApplication::setApplicationName(QString(300, QLatin1Char('x')));
    MAManagerProbe manager;
    EXPECT_FALSE(manager.join("p"));
    EXPECT_FALSE(manager.isInit());
    EXPECT_TRUE(manager.memory().key().isEmpty());
    EXPECT_EQ(manager.scratchBuffer(), nullptr);
    EXPECT_EQ(complaints(),
              (Texts{"ERROR register message failed", "ERROR p  create share memory failed"}));
    EXPECT_NE(log.records()[1].function.find("registerWindowMessage"), std::string::npos);
    QCoreApplication::setApplicationName(QStringLiteral("pavo-test"));
}

TEST_F(MAManagerTest, WithoutItsSegmentItStaysUninitialised)
{
    MAManagerProbe manager;
    {
        const SegmentBlocker blocker(segmentKey());
        EXPECT_TRUE(manager.createShareMemory()) << "the message is registered";
        EXPECT_FALSE(manager.memory().isAttached());
        log.clear();
        manager.changeMergeMode(0, false);
        EXPECT_FALSE(manager.join("p"));
    }
    EXPECT_FALSE(manager.isInit());
    EXPECT_NE(manager.scratchBuffer(), nullptr) << "until the manager goes";
    EXPECT_EQ(manager.quitCurrentAccount(), -1);
    EXPECT_EQ(log.count(DEBUG_LOG_LEVEL, "change merge, 0"), 2) << "the mode that was not stored";
    const Texts lines = complaints();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines.back(), "ERROR p  add current account failed");
    const std::string& failure = lines[lines.size() - 2];
    const std::string text = "ERROR  create share memory failed, ";
    EXPECT_EQ(failure.substr(0, text.size()), text);
    EXPECT_NE(std::atoi(failure.c_str() + text.size()), 0) << "the error's number";
    EXPECT_TRUE(manager.join("p")) << "as soon as the segment can be had";
}

TEST_F(MAManagerTest, StartUpAloneAttachesWithoutInitialising)
{
    MAManagerProbe manager;
    ASSERT_TRUE(manager.createShareMemory());
    EXPECT_TRUE(manager.memory().isAttached());
    EXPECT_FALSE(manager.isInit());
    EXPECT_EQ(manager.loginAccountCount(), 0);
    EXPECT_TRUE(manager.join("p"));
}

TEST_F(MAManagerTest, LastOneLeavesAnEmptyListAndTellsTheSelectedWindow)
{
    MAManagerProbe manager;
    ASSERT_TRUE(manager.join("p"));
    ASSERT_NE(segment(), nullptr);
    log.clear();
    EXPECT_EQ(manager.quitCurrentAccount(), 1);
    EXPECT_EQ(bytes(1024, 102400), padded("null", 102400));
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, postTo("title p", 3)));
    EXPECT_FALSE(manager.isInit());
    EXPECT_EQ(manager.scratchBuffer(), nullptr);
    EXPECT_FALSE(manager.memory().isAttached());
    EXPECT_EQ(manager.quitCurrentAccount(), -1);
    EXPECT_EQ(manager.currentPin(), "p");
    EXPECT_TRUE(complaints().empty());
}

TEST_F(MAManagerTest, FrontAccountHandsOverToTheOneBeforeItOrElseBehindIt)
{
    struct Case
    {
        int front;
        std::string target;
        std::string left;
    };
    for (const Case& each : {Case{0, "title q", "q:1 r:3"}, Case{1, "title p", "p:0 r:3"},
                             Case{2, "title q", "p:0 q:1"}}) {
        MAManagerProbe managers[3];
        for (int i = 0; i < 3; ++i)
            ASSERT_TRUE(managers[i].join(std::string(1, static_cast<char>('p' + i))));
        MAManagerProbe& quitting = managers[each.front];
        quitting.switchToCurrentPin();
        ASSERT_TRUE(quitting.isSelectedAccount());
        MAManagerProbe& staying = managers[each.front == 0 ? 1 : 0];
        log.clear();
        EXPECT_EQ(quitting.quitCurrentAccount(), 1);
        EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, postTo(each.target, 1))) << each.target;
        EXPECT_EQ(complaints(), Texts{"ERROR not find window, " + each.target});
        EXPECT_EQ(order(staying.accounts()), each.left);
    }
}

TEST_F(MAManagerTest, QuittingBehindTheFrontOrInSeparateModeTellsTheSelectedWindow)
{
    MAManagerProbe p;
    MAManagerProbe q;
    MAManagerProbe r;
    ASSERT_TRUE(p.join("p") && q.join("q") && r.join("r"));
    log.clear();
    EXPECT_EQ(q.quitCurrentAccount(), 1);
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, postTo("title p", 3)));
    p.changeMergeMode(0, false);
    log.clear();
    EXPECT_EQ(p.quitCurrentAccount(), 1);
    EXPECT_TRUE(log.has(DEBUG_LOG_LEVEL, postTo("title p", 3)));
    EXPECT_FALSE(log.has(DEBUG_LOG_LEVEL, postTo("title r", 1)));
    EXPECT_EQ(order(r.accounts()), "r:3");
}

TEST_F(MAManagerTest, QuittingUnlistedTakesNobodyElseOut)
{
    MAManagerProbe p;
    MAManagerProbe q;
    ASSERT_TRUE(p.join("p") && q.join("q"));
    ASSERT_TRUE(p.writeAll({p.own()}));
    EXPECT_EQ(q.quitCurrentAccount(), 1);
    EXPECT_EQ(order(p.accounts()), "p:1");
}

TEST_F(MAManagerTest, QuittingWithoutAReadableSegmentDoesNothing)
{
    MAManagerProbe p;
    MAManagerProbe q;
    ASSERT_TRUE(p.join("p") && q.join("q"));
    p.memory().detach();
    log.clear();
    EXPECT_EQ(p.quitCurrentAccount(), -1);
    EXPECT_TRUE(p.isInit());
    EXPECT_TRUE(log.records().empty());
    EXPECT_EQ(order(q.accounts()), "p:0 q:2");
}

TEST_F(MAManagerTest, SegmentGoesWithItsLastProcess)
{
    {
        MAManagerProbe manager;
        ASSERT_TRUE(manager.join("p"));
    }
    MAManagerProbe manager;
    ASSERT_TRUE(manager.createShareMemory());
    EXPECT_EQ(bytes(0, 103434), padded("", 103434));
}

TEST_F(MAManagerTest, DestructionDetachesAndLeavesTheObserverAlone)
{
    const auto guard = std::make_shared<int>();
    auto observer = std::make_unique<MAObserver>();
    observer->loginStateCallback = [guard](int) {};
    {
        // Uninitialised, so that there is no buffer to leave behind.
        MAManager manager;
        manager.addObserver(observer.get());
        manager.createShareMemory();
    }
    EXPECT_EQ(guard.use_count(), 2);
    EXPECT_FALSE(QSharedMemory(segmentKey()).attach()) << "nobody is attached any more";
}

TEST_F(MAManagerTest, ComingAndGoingLeavesNothingBehind)
{
    if (!kHeapIsMeasurable)
        GTEST_SKIP() << "a sanitizer's heap cannot be measured";
    MAManagerProbe manager;
    const auto comeAndGo = [&] {
        auto* observer = new MAObserver;
        observer->messageCallback = [](int, MASelectedAccount&, Accounts&) {};
        observer->loginStateCallback = [](int) {};
        manager.addObserver(observer);
        ASSERT_TRUE(manager.join("own"));
        EXPECT_EQ(manager.quitCurrentAccount(), 1);
        manager.removeObserver();
        log.clear();
    };
    constexpr int kTimes = 100;
    for (int i = 0; i < kTimes / 10; ++i)
        comeAndGo(); // what is made once is made now
    const std::size_t before = heapBytesInUse();
    for (int i = 0; i < kTimes; ++i)
        comeAndGo();
    EXPECT_LT(heapBytesInUse(), before + kTimes * sizeof(MAObserver))
        << "more than if each time an observer stayed";
}

TEST_F(MAManagerTest, ObserverIsOwnedUntilReplacedOrRemoved)
{
    MAManagerProbe manager;
    const auto first = std::make_shared<int>();
    const auto second = std::make_shared<int>();
    const auto observerWith = [](const std::shared_ptr<int>& token) {
        auto* observer = new MAObserver;
        observer->messageCallback = [token](int, MASelectedAccount&, Accounts&) {};
        observer->loginStateCallback = [token](int) {};
        return observer;
    };
    auto* observer = observerWith(first);
    manager.addObserver(observer);
    manager.addObserver(observer);
    EXPECT_EQ(manager.observer(), observer);
    EXPECT_EQ(first.use_count(), 3);
    manager.addObserver(observerWith(second));
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_EQ(second.use_count(), 3);
    manager.removeObserver();
    EXPECT_EQ(second.use_count(), 1);
    EXPECT_EQ(manager.observer(), nullptr);
    manager.removeObserver();
    manager.addObserver(nullptr);
    EXPECT_EQ(manager.observer(), nullptr);
}
