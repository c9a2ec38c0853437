#pragma once

#include "pavo_core/Export.h"

#include <functional>
#include <string>

class QLoginObserver;

/// The workbench's login service. Any thread may call any function; every function returns at once
/// and is answered later, on the service's own thread. Completions may be empty.
class PAVO_CORE_EXPORT LoginService
{
public:
    virtual ~LoginService();

    /// Logs the account \a pin in with a token that the host application obtained. \a client,
    /// \a extra and \a mode are the service's own. Observers learn the outcome; \a completion gets
    /// the result code (0 is success) and a text.
    virtual void hbxTokenLogin(const std::string& pin, const std::string& token,
                               const std::string& client, const std::string& extra, int mode,
                               std::function<void(int, std::string)> completion) = 0;

    /// Registers \a pin as the current account of \a application. \a completion gets the result
    /// code (0 is success).
    virtual void changeCurrentPin(const std::string& application, const std::string& pin,
                                  std::function<void(int)> completion) = 0;

    /// Changes the presence of the account that is logged in. \a reason is the service's own.
    /// Observers learn of the change; \a completion gets the result code (0 is success).
    virtual void switchPresence(int presence, int reason, std::function<void(int)> completion) = 0;

    /// Registers \a observer, which stays the caller's and must outlive its registration. Null and
    /// an observer that is registered already are ignored.
    virtual void addLoginObserver(QLoginObserver* observer) = 0;

    /// Ends the registration of \a observer. When this returns none of its callbacks is running or
    /// will run, so it can be destroyed. Hence a caller must not hold a lock that a callback takes.
    /// Called from a callback it returns at once, and that callback alone runs on to its end.
    virtual void removeLoginObserver(QLoginObserver* observer) = 0;
};
