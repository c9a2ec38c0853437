#pragma once

#include <functional>
#include <string>

/// Receiver of what a LoginService reports. Set the callbacks before handing the observer to
/// LoginService::addLoginObserver and leave them alone while it is registered. Each may be empty.
/// They are called on the service's thread and must not throw.
class QLoginObserver
{
public:
    /// A login failed: the account's pin, the service's failure code, the text for the user
    /// (UTF-8).
    std::function<void(std::string pin, long long code, std::string message)> onLoginFailure;

    /// An account's presence changed: its pin, the presence before and now.
    std::function<void(std::string pin, int before, int now)> onPresenceChanged;
};
