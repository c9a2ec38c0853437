// What each operation does when the store cannot be read: before the manager has joined, and when
// it has lost the segment.

#include "tests/support/Workbenches.h"

#include <ostream>

namespace {

using Texts = std::vector<std::string>;

struct Outcome
{
    int result;
    Texts lines;
    Texts calls;
};

struct Operation
{
    const char* name;
    int (*run)(MAManagerProbe& own, const MAAccountInfo& other); ///< 0 when it has no result
    Outcome beforeJoining;
    Outcome withoutSegment;
};

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

const Operation kOperations[] = {
    {"SwitchToAccount",
     [](MAManagerProbe& own, const MAAccountInfo& other) -> int {
         return own.switchToAccount(other);
     },
     {0, {}, {}},
     {0, {}, {}}},
    {"SwitchToCurrentPin",
     [](MAManagerProbe& own, const MAAccountInfo&) -> int { return own.switchToCurrentPin(); },
     {1,
      {"DEBUG switch to account, ", "DEBUG , window state, 0",
       "DEBUG post process message, , param2"},
      {"1  0 []"}},
     {1,
      {"DEBUG switch to account, ", "DEBUG a, window state, 0",
       "DEBUG post process message, , param2"},
      {"1  0 []"}}},
    {"PopUp",
     [](MAManagerProbe& own, const MAAccountInfo&) -> int { return own.popupMainWindow(true); },
     {1, {}, {"1  0 []"}},
     {1, {"DEBUG post process message, , param1"}, {}}},
    {"BringBack",
     [](MAManagerProbe& own, const MAAccountInfo&) -> int { return own.popupMainWindow(false); },
     {1, {}, {}},
     {1, {}, {}}},
    {"CheckWindowVisible",
     [](MAManagerProbe& own, const MAAccountInfo&) -> int { return own.checkWindowVisible(); },
     {0, {}, {}},
     {0, {}, {}}},
    {"SwitchShowState",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.switchShowState();
         return 0;
     },
     {0, {"INFO MAManager::switchShowState enter"}, {}},
     {0, {"INFO MAManager::switchShowState enter"}, {}}},
    {"SwitchedHide",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.switchedHide();
         return 0;
     },
     {0, {"INFO MAManager::switchedHide enter", "DEBUG , window state, 4"}, {}},
     {0, {"INFO MAManager::switchedHide enter", "DEBUG a, window state, 4"}, {}}},
    {"WindowStateChanged",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.windowStateChanged(kMAMaximised, QRect(1, 2, 30, 40));
         return 0;
     },
     {0, {}, {}},
     {0,
      {"DEBUG a, window max w, 30, h, 40", "DEBUG a, window state, 3",
       "DEBUG a, states 3, w, 0, h, 0"},
      {}}},
    {"ChangeMergeMode",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeMergeMode(kMASeparate, true);
         return 0;
     },
     {0, {"DEBUG change merge, 0"}, {}},
     {0, {"DEBUG change merge, 0"}, {}}},
    {"ChangeCurrentSkin",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeCurrentSkin(5);
         return own.own().skin;
     },
     {5, {"DEBUG post process message, , param3"}, {"3  0 []"}},
     {5, {"DEBUG post process message, , param3"}, {"3  0 []"}}},
    {"ChangeLoginState",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeLoginState(5);
         return own.own().loginState;
     },
     {5, {"DEBUG post process message, , param3"}, {"3  0 []"}},
     {5, {"DEBUG post process message, , param3"}, {"3  0 []"}}},
    {"ChangeCurrentUnread",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeCurrentUnread(5);
         return own.own().unreadMark;
     },
     {1, {}, {}},
     {1, {}, {}}},
    {"ChangeCurrentUnreadMark",
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeCurrentUnreadMark(1);
         return own.own().unreadMark;
     },
     {1, {}, {}},
     {1, {}, {}}},
    {"SwitchLoginState",
     [](MAManagerProbe& own, const MAAccountInfo&) -> int { return own.switchLoginState(5); },
     {0, {}, {}},
     {0, {}, {}}},
    {"SortAllAccount",
     [](MAManagerProbe& own, const MAAccountInfo&) -> int { return own.sortAllAccount({}); },
     {0, {}, {}},
     {1, {}, {}}},
    {"SelectedAccount",
     [](MAManagerProbe& own, const MAAccountInfo&) -> int {
         MASelectedAccount selected;
         return own.selectedAccount(selected);
     },
     {0, {"DEBUG SelectedAccount , w, 0, h, 0"}, {}},
     {0, {"DEBUG SelectedAccount , w, 0, h, 0"}, {}}},
    {"IsSelectedAccount",
     [](MAManagerProbe& own, const MAAccountInfo&) -> int { return own.isSelectedAccount(); },
     {1, {}, {}},
     {0, {"DEBUG SelectedAccount , w, 0, h, 0"}, {}}},
    {"LoginAccountCount",
     [](MAManagerProbe& own, const MAAccountInfo&) { return own.loginAccountCount(); },
     {0, {}, {}},
     {0, {}, {}}},
    {"QuitCurrentAccount",
     [](MAManagerProbe& own, const MAAccountInfo&) { return own.quitCurrentAccount(); },
     {-1, {}, {}},
     {-1, {}, {}}},
};

class MAUnreadableStoreTest : public WorkbenchesFixture,
                              public testing::WithParamInterface<Operation>
{
protected:
    void expectOutcome(const Outcome& outcome)
    {
        forget();
        EXPECT_EQ(GetParam().run(a.manager, b.manager.own()), outcome.result);
        EXPECT_EQ(logged(), outcome.lines);
        EXPECT_EQ(a.calls, outcome.calls);
        EXPECT_EQ(received(), "a:; b:; c:");
    }
};

} // namespace

TEST_P(MAUnreadableStoreTest, BeforeJoining)
{
    ASSERT_TRUE(b.join() && c.join());
    const std::string before = allBytes();
    expectOutcome(GetParam().beforeJoining);
    EXPECT_EQ(allBytes(), before);
}

TEST_P(MAUnreadableStoreTest, WithoutSegment)
{
    joinAll();
    const std::string before = allBytes();
    a.manager.memory().detach();
    expectOutcome(GetParam().withoutSegment);
    EXPECT_EQ(allBytes(), before);
}

INSTANTIATE_TEST_SUITE_P(Operations, MAUnreadableStoreTest, testing::ValuesIn(kOperations),
                         [](const auto& test) { return std::string(test.param.name); });
