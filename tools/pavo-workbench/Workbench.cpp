#include "tools/pavo-workbench/Workbench.h"

#include "ipc/KTChannelManager.h"
#include "pavo_core/SimulatedLoginService.h"
#include "tools/pavo-workbench/Say.h"

#include <QCoreApplication>
#include <QStringList>

#include <utility>

namespace {

constexpr const char* kClientVersion = "2.1.0";

QString text(const std::string& utf8)
{
    return QLatin1Char('"') + QString::fromStdString(utf8) + QLatin1Char('"');
}

QString keyText(const KTKeyInfo& info)
{
    return QStringLiteral("%1 (key 0x%2, modifiers 0x%3%4)")
        .arg(QString::fromStdString(info.functionName))
        .arg(static_cast<int>(info.key), 0, 16)
        .arg(static_cast<int>(info.modifiers), 0, 16)
        .arg(QLatin1String(info.valid ? "" : ", not in force"));
}

QString keysText(const std::vector<KTKeyInfo>& infos)
{
    QStringList texts;
    for (const KTKeyInfo& info : infos)
        texts << keyText(info);
    return texts.isEmpty() ? QStringLiteral("none") : texts.join(QStringLiteral(", "));
}

} // namespace

Workbench::Workbench(std::shared_ptr<SimulatedLoginService> loginService)
    : m_core(std::move(loginService))
{
    m_core.getCoreConfig().clientVersion = kClientVersion;
    PAVOCore::setShareInstance(&m_core);
    // Reported on the service's own thread.
    m_loginObserver.onPresenceChanged = [this](const std::string& pin, int, int now) {
        QMetaObject::invokeMethod(this, [this, pin, now] { takePresence(pin, now); });
    };
    m_core.loginService()->addLoginObserver(&m_loginObserver);
    connect(&m_accounts, &Accounts::loginStateWanted, this, &Workbench::setPresence);
}

Workbench::~Workbench()
{
    m_core.loginService()->removeLoginObserver(&m_loginObserver);
}

bool Workbench::startUp(const QString& commandLine)
{
    const auto startUpCallback = [](int code, const std::string& pin, const QString& skinName) {
        if (code < 0) {
            say(QStringLiteral("the host has gone before the main window was entered"));
            QCoreApplication::exit(HostGoneTooEarly);
            return;
        }
        say(QStringLiteral("start up as %1, skin \"%2\"").arg(text(pin), skinName));
    };
    const auto pinChangedCallback = [](const std::string& application, const QString& pin) {
        say(QStringLiteral("current pin of %1 is \"%2\"").arg(text(application), pin));
    };
    return KTChannelManager::sharedInstance()->startUp(commandLine, startUpCallback,
                                                       pinChangedCallback);
}

void Workbench::logIn(const std::string& pin, const std::string& token)
{
    m_core.loginService()->hbxTokenLogin(pin, token, {}, {}, 0, nullptr);
}

void Workbench::enterMainWindow(unsigned code)
{
    say(QStringLiteral("enter the main window with code %1").arg(code));
    KTChannelManager::sharedInstance()->enterMainUI(code, makeObserver().release());
    m_accounts.enterMainWindow();
}

void Workbench::setPresence(int presence)
{
    m_core.loginService()->switchPresence(presence, 0, [](int result) {
        if (result != SimulatedLoginService::Success)
            say(QStringLiteral("the presence cannot be changed, code %1").arg(result));
    });
}

void Workbench::takePresence(const std::string& pin, int presence)
{
    m_accounts.join(pin);
    m_accounts.changeLoginState(presence);
}

void Workbench::asked(const char* said, const QString& shown, const QString& detail)
{
    say(detail.isEmpty() ? QString::fromLatin1(said)
                         : QStringLiteral("%1 %2").arg(QLatin1String(said), detail));
    Q_EMIT hostAsked(shown, detail);
}

std::unique_ptr<KTChannelObserver> Workbench::makeObserver()
{
    auto observer = std::make_unique<KTChannelObserver>();
    observer->onOpenLXWindow = [this](int kind, const std::string& second,
                                      const std::string& first) {
        asked("open conversation", tr("Open conversation"),
              QStringLiteral("%1, kind %2, %3").arg(text(first)).arg(kind).arg(text(second)));
        m_accounts.popUp(true);
    };
    observer->onOpenLXGroup = [this](const std::string& second, const std::string& first) {
        asked("open group", tr("Open group"),
              QStringLiteral("%1, %2").arg(text(first), text(second)));
        m_accounts.popUp(true);
    };
    observer->onShowUnreadMessageList = [this](bool show, const QRect& place) {
        asked(show ? "show the unread messages" : "hide the unread messages",
              show ? tr("Show the unread messages") : tr("Hide the unread messages"),
              QStringLiteral("at (%1, %2), %3 x %4")
                  .arg(place.x())
                  .arg(place.y())
                  .arg(qint64{place.right()} - place.left() + 1)
                  .arg(qint64{place.bottom()} - place.top() + 1));
    };
    observer->onHotKeyChanged = [this](const std::vector<KTKeyInfo>& infos) {
        asked("hot keys:", tr("Hot keys"), keysText(infos));
    };
    observer->onShortcutChanged = [this](const std::vector<KTKeyInfo>& infos) {
        asked("shortcuts:", tr("Shortcuts"), keysText(infos));
        // The settings' last part follows, the merge mode, which no observer is told of.
        QMetaObject::invokeMethod(&m_accounts, &Accounts::takeHostSettings, Qt::QueuedConnection);
    };
    observer->onSkinChanged = [this](int index) {
        asked("skin", tr("Skin"), QString::number(index));
        m_accounts.changeSkin(index);
    };
    observer->onOpenBaseInfoSetting = [this] {
        asked("open the base-information settings", tr("Open the base-information settings"));
    };
    observer->onRequest = [this](const std::string& url) {
        asked("show the page", tr("Show the page"), text(url));
    };
    observer->onPipeClosed = [] {
        say(QStringLiteral("the host has gone"));
        QCoreApplication::quit();
    };
    return observer;
}
