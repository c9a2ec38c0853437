// While a manager posts or calls, the segment is free for every other process.

#include "pavo_base/Logger.h"
#include "tests/support/MAOperations.h"
#include "tests/support/RoleProcess.h"

#include <log4cplus/spi/loggingevent.h>

#include <functional>
#include <memory>

namespace {

/// Takes the lock and lets go of it, once for every line.
const Role kLock("take-the-lock", [](const QStringList& arguments) {
    QCoreApplication::setApplicationName(arguments[0]);
    MAManagerProbe manager;
    if (!manager.createShareMemory())
        return 1;
    while (!nextLineFromParent().empty()) {
        const bool isAttached = manager.memory().isAttached();
        { // Without a segment there is nothing to wait for.
            const MAMutex lock(&manager.memory());
        }
        sayToParent(isAttached ? "free" : "not attached");
    }
    return 0;
});

/// Sees a post from within: what is logged of it is logged by the thread that posts, before and
/// after it tries.
class PostWatcher : public log4cplus::Appender
{
public:
    explicit PostWatcher(std::function<void(const std::string&)> onRecord)
        : m_onRecord(std::move(onRecord))
    {
    }
    ~PostWatcher() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override
    {
        for (const char* beginning : {"post process message", "not find window"}) {
            if (event.getMessage().rfind(beginning, 0) == 0)
                m_onRecord(event.getMessage());
        }
    }

private:
    std::function<void(const std::string&)> m_onRecord;
};

class MALockFreePostTest : public MAOperationsFixture
{
protected:
    /// Whether another process gets into the segment before this one goes on.
    void expectFree(const std::string& moment)
    {
        m_other->say("try");
        EXPECT_EQ(m_other->nextLine(), "free") << moment;
    }

    /// Has the other process attach, which takes a free segment, too.
    void startOther()
    {
        m_other = std::make_unique<RoleProcess>("take-the-lock",
                                                QStringList{QCoreApplication::applicationName()});
        expectFree("at first");
    }

    /// What `act` does, as in MAOperation::trail; the segment is tried at each step.
    std::string trailOf(Workbench& own, const std::function<void()>& act)
    {
        std::string trail;
        const auto called = [&](int code) {
            trail += std::to_string(code);
            expectFree("in call " + trail);
        };
        auto* observer = new MAObserver;
        observer->messageCallback = [&](int code, auto&, auto&) { called(code); };
        observer->loginStateCallback = [&](int) { called(kMALoginState); };
        own.manager.addObserver(observer);

        const log4cplus::SharedAppenderPtr watcher(new PostWatcher([&](const std::string& text) {
            trail += 'p';
            expectFree(text);
        }));
        Logger::logger().addAppender(watcher);
        act();
        Logger::logger().removeAppender(watcher);
        own.manager.removeObserver();
        return trail;
    }

private:
    std::unique_ptr<RoleProcess> m_other;
};

class MALockFreeTest : public MALockFreePostTest, public testing::WithParamInterface<MAOperation>
{
};

} // namespace

TEST_P(MALockFreeTest, WhileItPostsAndCalls)
{
    const MAOperation& operation = GetParam();
    prepare(operation);
    startOther();
    EXPECT_EQ(trailOf(own(operation), [&] { run(operation, own(operation), c); }), operation.trail);
}

TEST_P(MALockFreeTest, AfterAnEmptyCallbackHasThrown)
{
    const MAOperation& operation = GetParam();
    prepare(operation);
    Workbench& workbench = own(operation);
    workbench.manager.addObserver(new MAObserver);
    if (!callsObserver(operation)) {
        EXPECT_NO_THROW(run(operation, workbench, c));
        return;
    }
    EXPECT_THROW(run(operation, workbench, c), std::bad_function_call);
    startOther();
}

INSTANTIATE_TEST_SUITE_P(Operations, MALockFreeTest, testing::ValuesIn(kMAOperations),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(MALockFreePostTest, AlsoWhenThePostFails)
{
    joinAll();
    startOther();
    const MAAccountInfo& target = b.manager.own();
    EXPECT_EQ(trailOf(a, [&] { a.manager.post(target.className, "gone", 5, 0); }), "pp")
        << "the line before and the complaint";
    constexpr int kMoreThanAQueueTakes = 25000;
    int posted = 0;
    while (PostMessageA(b.window.handle(), a.manager.messageId(), kMALoginState, 0) != 0) {
        if (++posted == kMoreThanAQueueTakes)
            GTEST_SKIP() << "this system's queues have no end";
    }
    EXPECT_EQ(trailOf(a, [&] { a.manager.post(target.className, target.title, 5, 0); }), "pp");
}
