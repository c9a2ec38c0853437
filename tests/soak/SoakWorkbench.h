#pragma once

#include "ipc/KTChannelManager.h"
#include "ipc/MultiAccount/MAManager.h"
#include "pavo_core/PAVOCore.h"
#include "pavo_core/QLoginObserver.h"
#include "pavo_core/SimulatedLoginService.h"
#include "platform/MessageWindow.h"

#include <QAbstractNativeEventFilter>
#include <QTimer>

#include <atomic>
#include <random>
#include <sstream>
#include <string>
#include <vector>

/// What the processes of one installation know of one another without asking.
struct SoakAccount
{
    static constexpr const char* kAppID = "soak";
    static constexpr const char* kClassName = "soak window";

    explicit SoakAccount(int seat);
    [[nodiscard]] MAAccountInfo record() const;

    std::string pin;
    std::string title; ///< Windows are seen by every process of the user: unique by application.
};

/// A workbench with a window and no content that works at random, on the command of the soak. Every
/// command is answered with one line, some not at once.
class SoakWorkbench : public QAbstractNativeEventFilter
{
public:
    SoakWorkbench(int seat, int seats, unsigned seed);
    ~SoakWorkbench() override;
    SoakWorkbench(const SoakWorkbench&) = delete;
    SoakWorkbench& operator=(const SoakWorkbench&) = delete;

    void run(const std::string& line);

    bool nativeEventFilter(const QByteArray& type, void* message, long* result) override;

private:
    struct Action;
    static const std::vector<Action>& actions();

    std::string answer(const std::string& command, std::istringstream& words);
    std::string start(const std::string& commandLine);
    void enterMainWindow();
    void actAtRandom();
    int any(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }
    /// What is sent while the host is there counts: all of it has to arrive.
    template<typename Send>
    void send(Send message)
    {
        message();
        if (m_isOpen)
            ++m_sent;
    }
    void observe(int code);
    void request(const std::string& url);
    void called();
    void answerIfDrained();
    /// Waits for the login service's answers and returns how many reports it has made since the
    /// last call: the channel sends one message for each.
    long long takeLoginReports();
    std::string sample();

    const SoakAccount m_account;
    const int m_seats;
    std::mt19937 m_random;
    std::atomic<long long> m_loginReports{0};
    QLoginObserver m_loginObserver;
    std::shared_ptr<SimulatedLoginService> m_service = std::make_shared<SimulatedLoginService>();
    PAVOCore m_core{m_service};
    KTChannelManager& m_channel{*KTChannelManager::sharedInstance()};
    const std::shared_ptr<MAManager> m_accounts = MAManager::Instance();
    pavo::MessageWindow m_window;
    const unsigned int m_mark;
    QTimer m_work;

    KTChannelObserver* m_observer = nullptr; ///< The channel's.
    bool m_isInMainWindow = false;           ///< Since the last start-up.
    bool m_isOpen = false;
    bool m_saysWhenClosed = false;
    bool m_saysWhenInFront = false;
    bool m_saysWhenDrained = false;
    // Since the last start-up.
    long long m_sent = 0;
    long long m_number = 0;
    long long m_callbacks = 0;
    long long m_lastNumber = 0;
    long long m_lastCallbacks = 0;
    std::vector<long long> m_latencies; ///< Since the last sample, in microseconds.
    std::string m_problem;
};
