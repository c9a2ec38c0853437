#include "tests/soak/QueuedLoginService.h"

#include "pavo_core/QLoginObserver.h"

#include <algorithm>
#include <utility>

QueuedLoginService::QueuedLoginService()
{
    m_onThread.moveToThread(&m_thread);
    m_thread.start();
}

QueuedLoginService::~QueuedLoginService()
{
    m_thread.quit();
    m_thread.wait();
}

template<typename Answer>
void QueuedLoginService::answer(Answer answer)
{
    QMetaObject::invokeMethod(&m_onThread, std::move(answer), Qt::QueuedConnection);
}

template<typename Task>
void QueuedLoginService::runNow(Task task)
{
    QMetaObject::invokeMethod(&m_onThread, std::move(task), Qt::BlockingQueuedConnection);
}

void QueuedLoginService::hbxTokenLogin(const std::string& pin, const std::string& /*token*/,
                                       const std::string& /*client*/, const std::string& /*extra*/,
                                       int mode, std::function<void(int, std::string)> /*unused*/)
{
    answer([this, pin, mode] {
        for (const QLoginObserver* observer : m_observers) {
            observer->onLoginFailure(pin, mode, "The token is wrong.");
            ++m_reports;
        }
    });
}

void QueuedLoginService::changeCurrentPin(const std::string& /*application*/,
                                          const std::string& /*pin*/,
                                          std::function<void(int)> completion)
{
    answer([completion] { completion(0); });
}

void QueuedLoginService::switchPresence(int presence, int /*reason*/,
                                        std::function<void(int)> /*unused*/)
{
    answer([this, presence] {
        for (const QLoginObserver* observer : m_observers) {
            observer->onPresenceChanged({}, 0, presence);
            ++m_reports;
        }
    });
}

void QueuedLoginService::addLoginObserver(QLoginObserver* observer)
{
    runNow([this, observer] { m_observers.push_back(observer); });
}

void QueuedLoginService::removeLoginObserver(QLoginObserver* observer)
{
    runNow([this, observer] {
        m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), observer),
                          m_observers.end());
    });
}

int QueuedLoginService::takeReports()
{
    int reports = 0;
    runNow([&] { reports = std::exchange(m_reports, 0); });
    return reports;
}
