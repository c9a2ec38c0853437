#pragma once

#include "MAAccountInfo.h"
#include "MASelectedAccount.h"

#include <functional>

/// What the workbench wants to hear from the manager, on the thread that uses the manager.
///
/// Create it with `new`: the manager deletes it. A manager calls both members without testing
/// them, so set both.
class PAVO_IPC_EXPORT MAObserver
{
public:
    /// Code of the message (an MACode), the account in front, the list of accounts. With separate
    /// windows both are the own account alone. docs/window-messages.md has what leads to each code.
    std::function<void(int, MASelectedAccount&, std::list<MAAccountInfo>&)> messageCallback;
    /// The login state to switch to.
    std::function<void(int)> loginStateCallback;
};
