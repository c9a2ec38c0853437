#include "pavo_core/SimulatedLoginService.h"

#include "pavo_core/QLoginObserver.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace {

// By Result.
constexpr const char* kResultTexts[] = {"", "The account is unknown.", "The token is wrong.",
                                        "No account is logged in."};

} // namespace

class SimulatedLoginService::Private
{
public:
    Private()
        : m_thread([this] { run(); })
    {
    }

    void stop()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_taskAdded.notify_one();
        m_thread.join();
    }

    void addAccount(const std::string& pin, const std::string& token)
    {
        const std::lock_guard lock(m_mutex);
        m_accounts[pin].token = token;
    }

    void addObserver(QLoginObserver* observer)
    {
        const std::lock_guard lock(m_mutex);
        if (observer && !isRegistered(observer))
            m_observers.push_back(observer);
    }

    void removeObserver(QLoginObserver* observer)
    {
        std::unique_lock lock(m_mutex);
        m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), observer),
                          m_observers.end());
        // A callback that removes its own observer must not wait for itself.
        if (std::this_thread::get_id() != m_thread.get_id())
            m_callEnded.wait(lock, [&] { return !m_called || m_called != observer; });
    }

    std::size_t observerCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_observers.size();
    }

    void post(std::function<void()> task)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_tasks.push_back(std::move(task));
        }
        m_taskAdded.notify_one();
    }

    // The functions below run on the service's thread.

    Result logIn(const std::string& pin, const std::string& token)
    {
        int before = Offline;
        const Result result = [&] {
            const std::lock_guard lock(m_mutex);
            const auto account = m_accounts.find(pin);
            if (account == m_accounts.end())
                return UnknownPin;
            if (account->second.token != token)
                return WrongToken;
            before = std::exchange(account->second.presence, Online);
            m_currentPin = pin;
            return Success;
        }();
        if (result == Success)
            report(&QLoginObserver::onPresenceChanged, pin, before, Online);
        else
            report(&QLoginObserver::onLoginFailure, pin, result, kResultTexts[result]);
        return result;
    }

    Result switchPresence(int presence)
    {
        std::string pin;
        int before = Offline;
        {
            const std::lock_guard lock(m_mutex);
            const auto account = m_accounts.find(m_currentPin);
            if (account == m_accounts.end())
                return NotLoggedIn;
            pin = account->first;
            before = std::exchange(account->second.presence, presence);
        }
        report(&QLoginObserver::onPresenceChanged, pin, before, presence);
        return Success;
    }

    // Calls each observer without the lock, so that a callback may use the service.
    template<typename Callback, typename... Arguments>
    void report(Callback QLoginObserver::*callback, const Arguments&... arguments)
    {
        std::unique_lock lock(m_mutex);
        const std::vector<QLoginObserver*> observers = m_observers;
        for (QLoginObserver* const observer : observers) {
            if (!isRegistered(observer))
                continue;
            m_called = observer;
            Callback call = observer->*callback; // a copy, for it may destroy its observer
            lock.unlock();
            if (call)
                call(arguments...);
            call = nullptr; // without the lock: what it captured may use the service too
            lock.lock();
            m_called = nullptr;
            m_callEnded.notify_all();
        }
    }

private:
    struct Account
    {
        std::string token;
        int presence = Offline;
    };

    bool isRegistered(const QLoginObserver* observer) const
    {
        return std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end();
    }

    void run()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_taskAdded.wait(lock, [this] { return m_stopping || !m_tasks.empty(); });
            if (m_stopping)
                return;
            std::function<void()> task = std::move(m_tasks.front());
            m_tasks.pop_front();
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
        }
    }

    mutable std::mutex m_mutex; // guards everything below but the thread
    std::condition_variable m_taskAdded;
    std::condition_variable m_callEnded;
    bool m_stopping = false;
    std::deque<std::function<void()>> m_tasks;
    std::vector<QLoginObserver*> m_observers;
    const QLoginObserver* m_called = nullptr; // the one whose callback is running, or null
    std::map<std::string, Account> m_accounts;
    std::string m_currentPin; // empty until a login succeeds
    std::thread m_thread;     // last, since it uses all of the above
};

SimulatedLoginService::SimulatedLoginService()
    : m_private(std::make_unique<Private>())
{
}

SimulatedLoginService::~SimulatedLoginService()
{
    m_private->stop(); // while m_private stands: a callback that is running may use the service
}

void SimulatedLoginService::addAccount(const std::string& pin, const std::string& token)
{
    m_private->addAccount(pin, token);
}

void SimulatedLoginService::hbxTokenLogin(const std::string& pin, const std::string& token,
                                          const std::string& /*client*/,
                                          const std::string& /*extra*/, int /*mode*/,
                                          std::function<void(int, std::string)> completion)
{
    m_private->post([this, pin, token, completion] {
        const Result result = m_private->logIn(pin, token);
        if (completion)
            completion(result, kResultTexts[result]);
    });
}

void SimulatedLoginService::changeCurrentPin(const std::string& /*application*/,
                                             const std::string& /*pin*/,
                                             std::function<void(int)> completion)
{
    m_private->post([completion] {
        if (completion)
            completion(Success);
    });
}

void SimulatedLoginService::switchPresence(int presence, int /*reason*/,
                                           std::function<void(int)> completion)
{
    m_private->post([this, presence, completion] {
        const Result result = m_private->switchPresence(presence);
        if (completion)
            completion(result);
    });
}

void SimulatedLoginService::addLoginObserver(QLoginObserver* observer)
{
    m_private->addObserver(observer);
}

void SimulatedLoginService::removeLoginObserver(QLoginObserver* observer)
{
    m_private->removeObserver(observer);
}

void SimulatedLoginService::reportLoginFailure(const std::string& pin, long long code,
                                               const std::string& message)
{
    m_private->post([this, pin, code, message] {
        m_private->report(&QLoginObserver::onLoginFailure, pin, code, message);
    });
}

void SimulatedLoginService::reportPresence(const std::string& pin, int before, int now)
{
    m_private->post([this, pin, before, now] {
        m_private->report(&QLoginObserver::onPresenceChanged, pin, before, now);
    });
}

std::size_t SimulatedLoginService::observerCount() const
{
    return m_private->observerCount();
}
