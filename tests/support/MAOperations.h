#pragma once

#include "tests/support/Workbenches.h"

#include <ostream>

/// One operation of a manager in a situation in which it posts or calls. Account "a" is in front;
/// `own` is "a" or "b", `other` the account "c".
struct MAOperation
{
    const char* name;
    int mode;
    int frontState; ///< of the window, as stored
    bool isFront;   ///< whether the own account is in front
    void (*run)(MAManagerProbe& own, const MAAccountInfo& other);
    /// What it does, in order: 'p' for a post, a digit for a call of the observer with that code.
    const char* trail;
};

inline bool callsObserver(const MAOperation& operation)
{
    return std::string(operation.trail).find_first_not_of('p') != std::string::npos;
}

inline void PrintTo(const MAOperation& operation, std::ostream* out)
{
    *out << operation.name;
}

/// Hands over a message as if it had been posted to the manager's window.
template<long code, long value = 0>
void receive(MAManagerProbe& own, const MAAccountInfo& /*other*/)
{
    own.handleNativeEvent(own.messageId(), code, value);
}

inline constexpr MAOperation kMAOperations[] = {
    {"SwitchToAccount", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo& other) { own.switchToAccount(other); }, "p"},
    {"SwitchToCurrentPin", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.switchToCurrentPin(); }, "p1"},
    {"PopUpInFront", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.popupMainWindow(true); }, "1"},
    {"PopUpFromBehind", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.popupMainWindow(true); }, "p"},
    {"PopUpOfAHiddenWindow", kMAMerged, kMAHidden, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.popupMainWindow(true); }, "p1"},
    {"BringBackInFront", kMAMerged, kMAHidden, true,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.popupMainWindow(false); }, "7"},
    {"BringBackFromBehind", kMAMerged, kMAHidden, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.popupMainWindow(false); }, "p"},
    {"BringBackASeparateWindow", kMASeparate, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.windowStateChanged(kMAHidden, QRect());
         own.popupMainWindow(false);
     },
     "7"},
    {"SwitchShowState", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.switchShowState(); }, "p"},
    {"SwitchedHide", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.switchedHide(); }, "p"},
    {"Merge", kMASeparate, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.changeMergeMode(kMAMerged, true); },
     "pp1"},
    {"Separate", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.changeMergeMode(kMASeparate, true); },
     "ppp1"},
    {"ChangeSkin", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.changeCurrentSkin(own.own().skin + 1); },
     "p3"},
    {"ChangeLoginState", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeLoginState(own.own().loginState + 1);
     },
     "p3"},
    {"UnreadBehind", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeCurrentUnread(own.own().unread + 1);
     },
     "p"},
    {"UnreadInFront", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeCurrentUnread(own.own().unread + 1);
     },
     "p3"},
    {"UnreadOfASeparateWindow", kMASeparate, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         own.changeCurrentUnread(own.own().unread + 1);
     },
     "3"},
    {"UnreadMark", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.changeCurrentUnreadMark(1); }, "p"},
    {"SwitchLoginState", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.switchLoginState(2); }, "ppp"},
    {"QuitInFront", kMAMerged, kMANormal, true,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.quitCurrentAccount(); }, "p"},
    {"QuitBehind", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) { own.quitCurrentAccount(); }, "p"},
    {"JoinWithAnotherMode", kMAMerged, kMANormal, false,
     [](MAManagerProbe& own, const MAAccountInfo&) {
         const MAAccountInfo account = own.own();
         own.uninit();
         own.changeMergeMode(kMASeparate, true);
         own.initManager(account.appID, account.pin, account.className, account.title, 1);
     },
     "ppp"},
    {"ReceiveShow", kMAMerged, kMANormal, false, &receive<kMAShow>, "p1"},
    {"ReceiveShowSeparately", kMASeparate, kMANormal, false, &receive<kMAShow>, "1"},
    {"ReceiveStepBack", kMAMerged, kMANormal, false, &receive<kMAStepBack>, "2"},
    {"ReceiveListChanged", kMAMerged, kMANormal, false, &receive<kMAListChanged>, "3"},
    {"ReceiveMarkChanged", kMAMerged, kMANormal, false, &receive<kMAMarkChanged>, "3"},
    {"ReceiveMarkSet", kMAMerged, kMANormal, false, &receive<kMAMarkChanged, 1>, "34"},
    {"ReceiveLoginState", kMAMerged, kMANormal, false, &receive<kMALoginState, 2>, "5"},
    {"ReceiveHiddenByUser", kMAMerged, kMANormal, false, &receive<kMAHiddenByUser>, "6"},
    {"ReceivePopUp", kMAMerged, kMANormal, false, &receive<kMAPopUp>, "7"},
    {"ReceiveToggle", kMAMerged, kMANormal, false, &receive<kMAToggle>, "8"},
};

/// Has the workbenches ready for an operation.
class MAOperationsFixture : public WorkbenchesFixture
{
protected:
    void prepare(const MAOperation& operation)
    {
        joinAll();
        b.manager.changeMergeMode(operation.mode, false);
        settle();
        MASelectedAccount front;
        const MAAccountInfo& account = a.manager.own();
        front.setAccount(account.appID, account.pin, account.className, account.title);
        front.mode = operation.mode;
        front.windowState = operation.frontState;
        ASSERT_TRUE(a.manager.writeSelected(front));
        forget();
    }
    Workbench& own(const MAOperation& operation) { return operation.isFront ? a : b; }
    static void run(const MAOperation& operation, Workbench& own, Workbench& other)
    {
        operation.run(own.manager, other.manager.own());
    }
};
