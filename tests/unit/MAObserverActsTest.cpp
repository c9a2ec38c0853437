// An observer may do anything while it is called.

#include "tests/support/MAOperations.h"

#include <functional>
#include <iterator>
#include <memory>

namespace {

struct Act
{
    const char* name;
    void (*run)(MAManagerProbe& own, const MAAccountInfo& other);
};

/// What observers may do that neither posts nor calls.
constexpr Act kQuietActs[] = {
    {"RemoveObserver", [](MAManagerProbe& own, const MAAccountInfo&) { own.removeObserver(); }},
    {"Join", [](MAManagerProbe& own, const MAAccountInfo&) { own.join(own.currentPin()); }},
    {"QuitAndJoin",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.quitCurrentAccount();
         own.join(own.currentPin());
     }},
    {"JoinAsAnother",
     [](MAManagerProbe& own, const MAAccountInfo&) { own.join(own.currentPin() + '+'); }},
    {"WindowStateChanged",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.windowStateChanged(kMAMaximised, QRect(1, 2, 3, 4));
         own.windowStateChanged(kMANormal, QRect(1, 2, 2, 2));
     }},
    {"Sort",
     [](MAManagerProbe& own, const MAAccountInfo& other) {
         own.sortAllAccount({{other.pin, 0}});
     }},
    {"Ask",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         MASelectedAccount selected;
         own.selectedAccount(selected);
         own.isSelectedAccount();
         own.loginAccountCount();
         own.checkWindowVisible();
         own.createShareMemory();
     }},
    {"HandleOtherMessages",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.handleNativeEvent(0, kMAShow, 0);
         own.handleNativeEvent(own.messageId(), 0, 0);
     }},
    {"RunTheEventLoop",
     [](MAManagerProbe&, const MAAccountInfo&) { QCoreApplication::processEvents(); }},
};

std::vector<Act> allActs()
{
    std::vector<Act> acts(std::begin(kQuietActs), std::end(kQuietActs));
    for (const MAOperation& operation : kMAOperations)
        acts.push_back({operation.name, operation.run});
    return acts;
}

/// The operations that call.
std::vector<MAOperation> callingOperations()
{
    std::vector<MAOperation> calling;
    for (const MAOperation& operation : kMAOperations) {
        if (callsObserver(operation))
            calling.push_back(operation);
    }
    return calling;
}

class MAObserverActsTest : public MAOperationsFixture,
                           public testing::WithParamInterface<MAOperation>
{
protected:
    /// Does `act` in every call, and in the calls that come of that, three deep.
    MAObserver* actingObserver(const std::function<void()>& act)
    {
        auto* observer = new MAObserver;
        const auto called = [this, act, token = m_token] {
            constexpr int kDeepest = 3;
            ++m_calls;
            if (++m_depth <= kDeepest)
                act();
            --m_depth;
            // What was called is still there, whatever has become of the observer.
            EXPECT_EQ(*token, "still there");
        };
        observer->messageCallback = [called](int, MASelectedAccount& selected,
                                             std::list<MAAccountInfo>& accounts) {
            called();
            selected = {};
            accounts.clear();
        };
        observer->loginStateCallback = [called](int) { called(); };
        return observer;
    }

    /// The operation with an observer that does `act`. Whatever that was, the others are in step
    /// afterwards and nothing of the observer is left.
    void tryWith(const std::function<void(MAManagerProbe&)>& act)
    {
        prepare(GetParam());
        Workbench& workbench = own(GetParam());
        m_calls = 0;
        workbench.manager.addObserver(actingObserver([&] { act(workbench.manager); }));
        EXPECT_NO_THROW(run(GetParam(), workbench, c));
        EXPECT_GT(m_calls, 0);
        workbench.manager.removeObserver();
        EXPECT_EQ(m_token.use_count(), 1);
        EXPECT_EQ(c.listed().pin, "c");
        settle();
    }

    MAObserver* replacement()
    {
        return actingObserver([this] { own(GetParam()).manager.addObserver(replacement()); });
    }

private:
    const std::shared_ptr<std::string> m_token = std::make_shared<std::string>("still there");
    int m_calls = 0;
    int m_depth = 0;
};

} // namespace

TEST_P(MAObserverActsTest, WhateverTheObserverDoes)
{
    for (const Act& act : allActs()) {
        SCOPED_TRACE(act.name);
        tryWith([&](MAManagerProbe& own) { act.run(own, c.manager.own()); });
    }
}

TEST_P(MAObserverActsTest, AlsoReplacingItself)
{
    tryWith([&](MAManagerProbe& own) { own.addObserver(replacement()); });
}

INSTANTIATE_TEST_SUITE_P(Operations, MAObserverActsTest, testing::ValuesIn(callingOperations()),
                         [](const auto& test) { return std::string(test.param.name); });
