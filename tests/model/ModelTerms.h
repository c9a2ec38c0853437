#pragma once

// The words in which the rules of the accounts are written.

#include "tests/model/AccountsModel.h"

namespace terms {

using Selected = AccountsModel::Selected;
using Process = AccountsModel::Process;
using Account = AccountsModel::Account;
using Accounts = AccountsModel::Accounts;
using Identity = AccountsModel::Identity;
using Rect = AccountsModel::Rect;
using Arguments = std::vector<int>;

enum Code { kShow = 1, kStepBack, kListChanged, kMarkChanged, kLogin, kHidden, kPopUp, kToggle };
enum State { kNormal = 1, kMinimised, kMaximised, kHiddenState };

inline bool isSame(const Identity& a, const Identity& b)
{
    return a.appID == b.appID && a.pin == b.pin;
}

inline bool isMerged(const Selected& selected)
{
    return selected.mode == 1;
}

/// A place is only remembered of a window in its normal state.
inline void placeWindow(Selected& selected, const Process& own)
{
    selected.windowState = own.windowState;
    if (own.windowState == kNormal)
        static_cast<Rect&>(selected) = own.rect;
}

inline std::string number(int value)
{
    return std::to_string(value);
}

} // namespace terms
