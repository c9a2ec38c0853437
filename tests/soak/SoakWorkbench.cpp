#include "tests/soak/SoakWorkbench.h"

#include "ipc/MultiAccount/MACodes.h"
#include "tests/soak/Clock.h"
#include "tests/soak/GrowthJudge.h"
#include "tests/soak/Resources.h"
#include "tests/support/RoleProcess.h"

#include <QCoreApplication>

#include <algorithm>
#include <future>
#include <utility>

namespace {

/// A state that no workbench reports.
constexpr int kNoLoginState = -1;

std::vector<int> numbersIn(std::istringstream& words)
{
    std::vector<int> numbers;
    for (int number = 0; words >> number;)
        numbers.push_back(number);
    return numbers;
}

} // namespace

SoakAccount::SoakAccount(int seat)
    : pin("pin" + std::to_string(seat))
    , title(QCoreApplication::applicationName().toStdString() + ' ' + pin)
{
}

MAAccountInfo SoakAccount::record() const
{
    MAAccountInfo record;
    record.setAccount(kAppID, pin, kClassName, title, 0, 0);
    return record;
}

SoakWorkbench::SoakWorkbench(int seat, int seats, unsigned seed)
    : m_account(seat)
    , m_seats(seats)
    , m_random(seed)
    , m_window(QString::fromLatin1(SoakAccount::kClassName),
               QString::fromStdString(m_account.title))
    , m_mark(RegisterWindowMessageW(L"pavo-soak-mark"))
{
    m_loginObserver.onLoginFailure = [this](const auto&...) { ++m_loginReports; };
    m_loginObserver.onPresenceChanged = [this](const auto&...) { ++m_loginReports; };
    m_service->addLoginObserver(&m_loginObserver);
    // Somebody is logged in, whose presence the host changes; the host's own logins all fail.
    m_service->addAccount(m_account.pin, "token");
    m_service->hbxTokenLogin(m_account.pin, "token", {}, {}, 0, nullptr);
    PAVOCore::setShareInstance(&m_core);
    QCoreApplication::instance()->installNativeEventFilter(this);

    auto* observer = new MAObserver;
    observer->messageCallback = [this](int code, MASelectedAccount&, std::list<MAAccountInfo>&) {
        observe(code);
    };
    observer->loginStateCallback = [this](int state) { m_accounts->changeLoginState(state); };
    m_accounts->addObserver(observer);

    constexpr int kEveryMs = 40;
    m_work.setInterval(kEveryMs);
    QObject::connect(&m_work, &QTimer::timeout, [this] { actAtRandom(); });
}

SoakWorkbench::~SoakWorkbench()
{
    // Both outlive this object, which their callbacks refer to.
    m_accounts->removeObserver();
    m_channel.enterMainUI(0, nullptr);
    m_channel.startUp(QString(), nullptr, nullptr);
    m_channel.removeObserver();
    m_service->removeLoginObserver(&m_loginObserver);
}

void SoakWorkbench::run(const std::string& line)
{
    std::istringstream words(line);
    std::string command;
    words >> command;
    const std::string text = answer(command, words);
    if (!text.empty())
        sayToParent(text);
}

std::string SoakWorkbench::answer(const std::string& command, std::istringstream& words)
{
    if (command == "start") {
        std::string commandLine;
        words >> commandLine;
        return start(commandLine);
    }
    if (command == "join") {
        const bool joined = m_accounts->initManager(SoakAccount::kAppID, m_account.pin,
                                                    SoakAccount::kClassName, m_account.title, 0);
        return joined ? "joined" : "refused";
    }
    if (command == "quit") {
        m_window.setVisible(false);
        return m_accounts->quitCurrentAccount() == 1 ? "quit" : "refused";
    }
    if (command == "work") {
        m_work.start();
        return "working";
    }
    if (command == "rest") {
        m_work.stop();
        return "resting";
    }
    if (command == "drain") {
        words >> m_lastNumber >> m_lastCallbacks;
        m_saysWhenDrained = true;
        answerIfDrained();
        return {};
    }
    if (command == "sent") {
        m_sent += takeLoginReports();
        return std::to_string(m_sent);
    }
    if (command == "mark")
        return PostMessageA(m_window.handle(), m_mark, 0, 0) ? "" : "the mark cannot be posted";
    if (command == "sample")
        return sample();
    if (command == "closed") {
        m_saysWhenClosed = m_isOpen;
        return m_isOpen ? "" : "closed";
    }
    if (command == "leave") {
        QCoreApplication::quit();
        return "leaving";
    }
    if (command == "await-front") {
        m_saysWhenInFront = true;
        return "waiting";
    }
    if (command == "front") {
        m_accounts->switchToCurrentPin();
        return "switched";
    }
    const std::vector<int> numbers = numbersIn(words);
    if (command == "settle") {
        m_accounts->changeCurrentUnread(numbers.at(0));
        m_accounts->changeCurrentSkin(numbers.at(1));
        // A record that was found at joining kept its state, which this process does not know.
        m_accounts->changeLoginState(kNoLoginState);
        m_accounts->changeLoginState(numbers.at(2));
        return "settled";
    }
    if (command == "merge") {
        m_accounts->changeMergeMode(numbers.at(0), true);
        return "merged";
    }
    if (command == "switch") {
        const long long time = nowUs();
        const bool isSwitched = m_accounts->switchToAccount(SoakAccount(numbers.at(0)).record());
        return isSwitched ? "switched " + std::to_string(time) : "refused";
    }
    return "unknown command " + command;
}

std::string SoakWorkbench::start(const std::string& commandLine)
{
    takeLoginReports();
    m_sent = m_number = m_callbacks = 0;
    m_isOpen = true;
    m_isInMainWindow = false;
    const auto startUpCallback = [this](int code, const std::string& /*pin*/, const QString&) {
        m_isOpen = code == 1;
        if (m_isOpen)
            enterMainWindow();
        sayToParent(m_isOpen ? "started" : "the host has gone before the login");
    };
    return m_channel.startUp(QString::fromStdString(commandLine), startUpCallback,
                             [](const std::string&, const QString&) {})
               ? ""
               : "no pipes";
}

void SoakWorkbench::enterMainWindow()
{
    m_observer = new KTChannelObserver;
    m_observer->onOpenLXWindow = [this](int, const std::string&, const std::string&) { called(); };
    m_observer->onOpenLXGroup = [this](const std::string&, const std::string&) { called(); };
    m_observer->onShowUnreadMessageList = [this](bool, QRect) { called(); };
    m_observer->onHotKeyChanged = [this](const std::vector<KTKeyInfo>&) { called(); };
    m_observer->onShortcutChanged = [this](const std::vector<KTKeyInfo>&) { called(); };
    m_observer->onSkinChanged = [this](int index) {
        called();
        m_accounts->changeCurrentSkin(index);
        send([&] { m_channel.changeSkinCallback(index); });
    };
    m_observer->onOpenBaseInfoSetting = [this] { called(); };
    m_observer->onRequest = [this](const std::string& url) { request(url); };
    m_observer->onPipeClosed = [this] {
        m_isOpen = false;
        if (std::exchange(m_saysWhenClosed, false))
            sayToParent("closed");
    };
    send([&] { m_channel.enterMainUI(0, m_observer); });
    m_isInMainWindow = true;
}

bool SoakWorkbench::nativeEventFilter(const QByteArray& /*type*/, void* message, long* /*result*/)
{
    const auto* posted = static_cast<const MSG*>(message);
    if (posted->hwnd != m_window.handle())
        return false;
    if (posted->message != m_mark)
        return m_accounts->handleNativeEvent(posted->message, static_cast<long>(posted->wParam),
                                             static_cast<long>(posted->lParam));
    sayToParent("marked");
    return true;
}

void SoakWorkbench::observe(int code)
{
    if (code == kMAShow)
        m_window.setVisible(true);
    else if (code == kMAStepBack)
        m_window.setVisible(false);
    if (code == kMAShow && std::exchange(m_saysWhenInFront, false))
        sayToParent("front " + std::to_string(nowUs()));
}

void SoakWorkbench::called()
{
    ++m_callbacks;
}

void SoakWorkbench::request(const std::string& url)
{
    const long long now = nowUs();
    called();
    long long number = 0;
    long long time = 0;
    std::istringstream(url) >> number >> time;
    if (number != m_number + 1 && m_problem.empty())
        m_problem = "message " + std::to_string(number) + " came after " + std::to_string(m_number);
    m_number = number;
    m_latencies.push_back(now - time);
    // Answers the host, which waits for it before it says much more.
    send([&] { m_channel.openUrl(url, true); });
    answerIfDrained();
}

void SoakWorkbench::answerIfDrained()
{
    if (!m_saysWhenDrained || m_number < m_lastNumber)
        return;
    m_saysWhenDrained = false;
    if (m_problem.empty() && m_callbacks != m_lastCallbacks)
        m_problem = std::to_string(m_callbacks) + " callbacks instead of " +
                    std::to_string(m_lastCallbacks);
    sayToParent(m_problem.empty() ? "drained" : m_problem);
}

long long SoakWorkbench::takeLoginReports()
{
    // The service answers in the order of the calls.
    std::promise<void> answered;
    m_service->changeCurrentPin({}, {}, [&](int) { answered.set_value(); });
    answered.get_future().wait();
    return m_loginReports.exchange(0);
}

std::string SoakWorkbench::sample()
{
    std::string text = ownResources() + ' ' + std::to_string(m_latencies.size());
    std::sort(m_latencies.begin(), m_latencies.end());
    for (const std::size_t percent : {50, 99, 100})
        text += ' ' + std::to_string(m_latencies.empty()
                                         ? GrowthJudge::kNone
                                         : m_latencies[(m_latencies.size() - 1) * percent / 100]);
    m_latencies.clear();
    return text;
}
