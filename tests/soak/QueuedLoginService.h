#pragma once

#include "pavo_core/LoginService.h"

#include <QObject>
#include <QThread>

#include <vector>

/// A login service that answers on a thread of its own and keeps nothing of what it was asked: a
/// login always fails, a presence is always taken.
class QueuedLoginService final : public LoginService
{
public:
    QueuedLoginService();
    ~QueuedLoginService() override;
    QueuedLoginService(const QueuedLoginService&) = delete;
    QueuedLoginService& operator=(const QueuedLoginService&) = delete;

    void hbxTokenLogin(const std::string& pin, const std::string& token, const std::string& client,
                       const std::string& extra, int mode,
                       std::function<void(int, std::string)> completion) override;
    void changeCurrentPin(const std::string& application, const std::string& pin,
                          std::function<void(int)> completion) override;
    void switchPresence(int presence, int reason, std::function<void(int)> completion) override;
    void addLoginObserver(QLoginObserver* observer) override;
    void removeLoginObserver(QLoginObserver* observer) override;

    /// Waits for the answers due and returns how many reports observers have had since the last
    /// call.
    int takeReports();

private:
    template<typename Answer>
    void answer(Answer answer);
    template<typename Task>
    void runNow(Task task);

    QThread m_thread;
    QObject m_onThread;
    // Touched on the thread alone.
    std::vector<QLoginObserver*> m_observers;
    int m_reports = 0;
};
