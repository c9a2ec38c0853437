// Login and presence: from the host to the login service, and what the service reports back.

#include "ipc/KTChannelManager.h"

#include "ipc/KTProcessMessage.h"
#include "pavo_base/JSONUtils.h"
#include "pavo_base/Logger.h"
#include "pavo_base/TextUtils.h"
#include "pavo_core/LoginService.h"
#include "pavo_core/PAVOCore.h"
#include "pavo_core/QLoginObserver.h"

#include <log4cplus/loggingmacros.h>

#include <memory>
#include <utility>
#include <vector>

namespace {

/// The application name under which the workbench registers its current pin.
constexpr char kApplicationName[] = "im.waiter";
/// Says to the start-up callback that the host has logged the workbench in.
constexpr int kLoggedIn = 1;
constexpr Json::ArrayIndex kLoginArguments = 6;

/// Observers that are registered no more. They outlive everything: a service may still be calling
/// one of them on a thread of its own.
std::vector<QLoginObserver*>& detachedObservers()
{
    static auto* const observers = new std::vector<QLoginObserver*>;
    return *observers;
}

std::shared_ptr<LoginService> loginService()
{
    PAVOCore* core = PAVOCore::shareInstance();
    return core ? core->loginService() : nullptr;
}

} // namespace

void KTChannelManager::login(KTProcessMessage& message)
{
    const Json::Value& arguments = message.arguments;
    const Json::ArrayIndex count = message.argumentCount();
    if (count < kLoginArguments) {
        LOG4CPLUS_WARN(Logger::logger(), "login agruments failed " << count);
        return;
    }
    const std::string pin = TextUtils::tolower(TextUtils::trim(JSONUtils::optString(0, arguments)));
    // The flag at position 1 is part of the message and of no use here.
    const int mode = JSONUtils::optInt(2, arguments);
    const std::string text3 = JSONUtils::optString(3, arguments);
    const std::string text4 = JSONUtils::optString(4, arguments);
    const std::string text2 = JSONUtils::optString(5, arguments);
    if (!PAVOCore::shareInstance())
        return;
    if (m_context) {
        LOG4CPLUS_WARN(Logger::logger(), "startup app " << pin);
        // The start-up callback may enter the main window, and the context is gone then.
        const auto startUpCallback = m_context->startUpCallback;
        const auto pinChangedCallback = m_context->pinChangedCallback;
        const QString skinName = QString::fromStdString(m_context->skinName);
        if (startUpCallback)
            startUpCallback(kLoggedIn, pin, skinName);
        const auto pinChanged = [pinChangedCallback, pin](int) {
            if (pinChangedCallback)
                pinChangedCallback(kApplicationName, QString::fromStdString(pin));
        };
        // Asked for now, since the start-up callback may have brought the service about.
        if (const auto service = loginService())
            service->changeCurrentPin(kApplicationName, pin, pinChanged);
    }
    // The outcome comes back through the login observer alone.
    if (const auto service = loginService())
        service->hbxTokenLogin(pin, text2, text3, text4, mode, nullptr);
}

void KTChannelManager::swtichStatus(KTProcessMessage& message)
{
    if (message.argumentCount() == 0)
        return;
    const int status = JSONUtils::optInt(0, message.arguments);
    const auto service = loginService();
    if (!service || status <= 0) {
        LOG4CPLUS_ERROR(Logger::logger(), "Unprocessed swtich status, " << status);
        return;
    }
    service->switchPresence(status, 0, nullptr);
}

void KTChannelManager::addLoginObserver()
{
    const auto service = loginService();
    if (!service)
        return;
    removeObserver();
    // The service calls back on its own thread, at any time: the manager may be gone by then.
    const std::weak_ptr<WeakFlag> alive = m_alive;
    auto* observer = new QLoginObserver;
    observer->onLoginFailure = [this, alive](const std::string& account, long long code,
                                             const std::string& message) {
        if (const auto stillThere = alive.lock())
            loginFailure(account, code, message);
    };
    observer->onPresenceChanged = [this, alive](const std::string&, int, int status) {
        if (const auto stillThere = alive.lock())
            changeStatusCallback(status);
    };
    m_loginObserver = observer;
    service->addLoginObserver(observer);
}

void KTChannelManager::removeObserver()
{
    const auto service = loginService();
    if (!service || !m_loginObserver)
        return;
    service->removeLoginObserver(m_loginObserver);
    detachedObservers().push_back(std::exchange(m_loginObserver, nullptr));
}
