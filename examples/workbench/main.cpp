// A workbench of one window: it shows the accounts and what the host has asked for.

#include <pavo_ipc/KTChannelManager.h>
#include <pavo_ipc/MultiAccount/MAManager.h>

#include <pavo_base/Logger.h>
#include <pavo_core/PAVOCore.h>
#include <pavo_core/SimulatedLoginService.h>

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstdio>
#include <memory>
#include <vector>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

constexpr const char* kAppId = "im.example";

/// The window's class as other processes see it; empty where that means nothing.
QString windowClass([[maybe_unused]] const QWidget& window)
{
#ifdef Q_OS_WIN
    wchar_t name[256];
    const int length = GetClassNameW(reinterpret_cast<HWND>(window.winId()), name, 256);
    return QString::fromWCharArray(name, length);
#else
    return {};
#endif
}

class MainWindow : public QWidget, public QAbstractNativeEventFilter
{
public:
    MainWindow()
    {
        auto* layout = new QVBoxLayout(this);
        auto* markRead = new QPushButton(QStringLiteral("All read"));
        for (QWidget* widget : {static_cast<QWidget*>(m_accounts), static_cast<QWidget*>(m_asked),
                                static_cast<QWidget*>(markRead)})
            layout->addWidget(widget);
        connect(m_accounts, &QListWidget::itemActivated, this, [this] {
            MAManager::Instance()->switchToAccount(
                m_list.at(std::size_t(m_accounts->currentRow())));
        });
        connect(markRead, &QPushButton::clicked, this, [this] { setUnread(0); });
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    ~MainWindow() override
    {
        MAManager::Instance()->quitCurrentAccount();
        MAManager::Instance()->removeObserver();
    }

    /// The host has logged this account in.
    void enter(const std::string& pin)
    {
        setWindowTitle(QString::fromStdString(pin) + QStringLiteral(" - Example"));
        show();
        joinAccounts(pin);
        reportPlace();
        listenToHost();
    }

    bool nativeEventFilter(const QByteArray& /*type*/, [[maybe_unused]] void* message,
                           long* /*result*/) override
    {
#ifdef Q_OS_WIN
        const auto* posted = static_cast<const MSG*>(message);
        return MAManager::Instance()->handleNativeEvent(
            posted->message, static_cast<long>(posted->wParam), static_cast<long>(posted->lParam));
#else
        return false;
#endif
    }

protected:
    void moveEvent(QMoveEvent* /*event*/) override
    {
        reportPlace();
    }
    void resizeEvent(QResizeEvent* /*event*/) override
    {
        reportPlace();
    }

private:
    void reportPlace()
    {
        MAManager::Instance()->windowStateChanged(isMaximized() ? kMAMaximised : kMANormal,
                                                  geometry());
    }

    void joinAccounts(const std::string& pin)
    {
        const auto accounts = MAManager::Instance();
        auto* observer = new MAObserver; // The manager owns it. Both callbacks have to be set.
        observer->messageCallback = [this](int code, MASelectedAccount& front,
                                           std::list<MAAccountInfo>& list) {
            // Left out: a tray's icon, of which kMAHiddenByUser and kMAToggle come.
            if (code == kMAShow && front.w > 0 && front.h > 0)
                setGeometry(front.x, front.y, front.w, front.h);
            if (code == kMAShow || code == kMAPopUp)
                show();
            else if (code == kMAStepBack)
                hide();
            if (!list.empty())
                showAccounts({list.begin(), list.end()});
        };
        observer->loginStateCallback = [](int state) {
            PAVOCore::shareInstance()->loginService()->switchPresence(state, 0, nullptr);
        };
        accounts->addObserver(observer);
        accounts->initManager(kAppId, pin, windowClass(*this).toStdString(),
                              windowTitle().toStdString(), 0);
        accounts->switchToCurrentPin();
    }

    void listenToHost()
    {
        auto* observer = new KTChannelObserver; // The channel owns it.
        observer->onOpenLXWindow = [this](int /*kind*/, const std::string& /*second*/,
                                          const std::string& customer) {
            m_asked->addItem(QStringLiteral("Talk to ") + QString::fromStdString(customer));
            setUnread(m_asked->count());
        };
        observer->onPipeClosed = [] { QCoreApplication::quit(); };
        KTChannelManager::sharedInstance()->enterMainUI(0, observer);
    }

    void setUnread(int count)
    {
        if (count == 0)
            m_asked->clear();
        KTChannelManager::sharedInstance()->unreadMsgChanged(count);
        MAManager::Instance()->changeCurrentUnread(count);
    }

    void showAccounts(std::vector<MAAccountInfo> list)
    {
        m_list = std::move(list);
        m_accounts->clear();
        for (const MAAccountInfo& account : m_list)
            m_accounts->addItem(QStringLiteral("%1 (%2)")
                                    .arg(QString::fromStdString(account.pin))
                                    .arg(account.unread));
    }

    QListWidget* m_accounts = new QListWidget;
    QListWidget* m_asked = new QListWidget;
    std::vector<MAAccountInfo> m_list;
};

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    // The workbenches of this name share their accounts.
    QCoreApplication::setApplicationName(QStringLiteral("example-workbench"));

    Logger::initialise(log4cplus::WARN_LOG_LEVEL);

    // A workbench has its framework's login service; this one knows one account.
    const auto service = std::make_shared<SimulatedLoginService>();
    service->addAccount("waiter", "secret");
    PAVOCore core(service);
    core.getCoreConfig().clientVersion = "1.0.0";
    PAVOCore::setShareInstance(&core);

    MainWindow window;
    const bool started = KTChannelManager::sharedInstance()->startUp(
        QCoreApplication::arguments().join(QLatin1Char(' ')),
        [&](int code, std::string pin, const QString /*skin*/) {
            if (code < 0)
                QCoreApplication::exit(1); // The host has gone.
            else
                window.enter(pin);
        },
        [](std::string /*application*/, const QString /*pin*/) {});
    if (!started) {
        std::fputs("example-workbench is started by a host: the command line names no pipes\n",
                   stderr);
        return 2;
    }
    return QCoreApplication::exec();
}
