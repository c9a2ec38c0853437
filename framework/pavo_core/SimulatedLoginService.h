#pragma once

#include "pavo_core/LoginService.h"

#include <memory>
#include <string>

/// A login service without a server, for demonstrations and tests.
///
/// It answers on a thread of its own, in the order of the calls: the observers first, in the order
/// of their registration, then the completion. Destruction waits for a callback that is running and
/// drops the answers that are still due; the last owner must therefore not let go of the service
/// inside a callback.
class PAVO_CORE_EXPORT SimulatedLoginService : public LoginService
{
public:
    /// Result codes of completions and login failures.
    enum Result { Success = 0, UnknownPin = 1, WrongToken = 2, NotLoggedIn = 3 };

    /// Presence of an account before and after its login.
    enum Presence { Offline = 0, Online = 1 };

    SimulatedLoginService();
    ~SimulatedLoginService() override;

    /// Makes \a pin known, or changes its token.
    void addAccount(const std::string& pin, const std::string& token);

    void hbxTokenLogin(const std::string& pin, const std::string& token, const std::string& client,
                       const std::string& extra, int mode,
                       std::function<void(int, std::string)> completion) override;
    void changeCurrentPin(const std::string& application, const std::string& pin,
                          std::function<void(int)> completion) override;
    void switchPresence(int presence, int reason, std::function<void(int)> completion) override;
    void addLoginObserver(QLoginObserver* observer) override;
    void removeLoginObserver(QLoginObserver* observer) override;

    /// Reports to the observers what a server would report of its own accord.
    void reportLoginFailure(const std::string& pin, long long code, const std::string& message);
    void reportPresence(const std::string& pin, int before, int now);

    [[nodiscard]] std::size_t observerCount() const;

private:
    Q_DISABLE_COPY(SimulatedLoginService)

    class Private;
    const std::unique_ptr<Private> m_private;
};
