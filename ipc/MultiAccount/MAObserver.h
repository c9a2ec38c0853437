#pragma once

#include "MAAccountInfo.h"
#include "MASelectedAccount.h"

#include <functional>

/// What the workbench wants to hear from the manager, on the GUI thread.
///
/// Create it with `new`: the manager deletes it. Set both members: the manager calls them without a
/// test, and an empty one throws std::bad_function_call. A callback may do anything, even replace
/// the observer.
class PAVO_IPC_EXPORT MAObserver
{
public:
    /// Called with an MACode, the account in front and the list of accounts. With separate windows
    /// both are this process's own account. docs/window-messages.md tells what leads to each code.
    std::function<void(int, MASelectedAccount&, std::list<MAAccountInfo>&)> messageCallback;
    /// Called with the login state to switch to.
    std::function<void(int)> loginStateCallback;
};
