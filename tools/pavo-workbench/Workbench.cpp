#include "tools/pavo-workbench/Workbench.h"

#include "ipc/KTChannelManager.h"
#include "pavo_core/SimulatedLoginService.h"
#include "tools/pavo-workbench/Say.h"
#include "tools/pavo-workbench/Skin.h"

#include <QCoreApplication>
#include <QMetaEnum>
#include <QStringList>

#include <utility>

namespace {

constexpr const char* kClientVersion = "2.1.0";

QString text(const std::string& utf8)
{
    return QLatin1Char('"') + QString::fromStdString(utf8) + QLatin1Char('"');
}

/// As on a menu: "Ctrl+Alt+F1".
QString keysText(const KTKeyInfo& info)
{
    constexpr struct
    {
        Qt::KeyboardModifier modifier;
        const char* name;
    } kModifiers[] = {{Qt::ControlModifier, "Ctrl+"},
                      {Qt::AltModifier, "Alt+"},
                      {Qt::ShiftModifier, "Shift+"},
                      {Qt::MetaModifier, "Meta+"}};
    QString text;
    for (const auto& [modifier, name] : kModifiers) {
        if (info.modifiers.testFlag(modifier))
            text += QLatin1String(name);
    }
    const QByteArray key = QMetaEnum::fromType<Qt::Key>().valueToKey(info.key);
    return text + QString::fromLatin1(key.mid(key.indexOf('_') + 1));
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

template<typename... Texts>
Workbench::Detail Workbench::detail(const char* english, const Texts&... texts)
{
    return {QString::fromLatin1(english).arg(texts...), tr(english).arg(texts...)};
}

Workbench::Detail Workbench::detail(const std::vector<KTKeyInfo>& keys)
{
    if (keys.empty())
        return {QStringLiteral("none"), tr("none")};
    QStringList said;
    QStringList shown;
    for (const KTKeyInfo& info : keys) {
        const char* const text = info.valid ? "%1 (%2)" : QT_TR_NOOP("%1 (%2, not in force)");
        const Detail each = detail(text, QString::fromStdString(info.functionName), keysText(info));
        said << each.said;
        shown << each.shown;
    }
    return {said.join(QStringLiteral(", ")), shown.join(QStringLiteral(", "))};
}

void Workbench::asked(const char* said, const QString& shown, const Detail& detail)
{
    say(detail.said.isEmpty() ? QString::fromLatin1(said)
                              : QStringLiteral("%1 %2").arg(QLatin1String(said), detail.said));
    Q_EMIT hostAsked(shown, detail.shown);
}

std::unique_ptr<KTChannelObserver> Workbench::makeObserver()
{
    auto observer = std::make_unique<KTChannelObserver>();
    observer->onOpenLXWindow = [this](int kind, const std::string& second,
                                      const std::string& first) {
        asked("open conversation", tr("Open conversation"),
              detail(QT_TR_NOOP("%1, kind %2, %3"), text(first), QString::number(kind),
                     text(second)));
        m_accounts.popUp(true);
    };
    observer->onOpenLXGroup = [this](const std::string& second, const std::string& first) {
        asked("open group", tr("Open group"), detail("%1, %2", text(first), text(second)));
        m_accounts.popUp(true);
    };
    observer->onShowUnreadMessageList = [this](bool show, const QRect& place) {
        asked(show ? "show the unread messages" : "hide the unread messages",
              show ? tr("Show the unread messages") : tr("Hide the unread messages"),
              detail(QT_TR_NOOP("at (%1, %2), %3 x %4"), QString::number(place.x()),
                     QString::number(place.y()),
                     QString::number(qint64{place.right()} - place.left() + 1),
                     QString::number(qint64{place.bottom()} - place.top() + 1)));
    };
    observer->onHotKeyChanged = [this](const std::vector<KTKeyInfo>& infos) {
        asked("hot keys:", tr("Hot keys"), detail(infos));
    };
    observer->onShortcutChanged = [this](const std::vector<KTKeyInfo>& infos) {
        asked("shortcuts:", tr("Shortcuts"), detail(infos));
        // The settings' last part follows, the merge mode, which no observer is told of.
        QMetaObject::invokeMethod(&m_accounts, &Accounts::takeHostSettings, Qt::QueuedConnection);
    };
    observer->onSkinChanged = [this](int index) {
        asked("skin", tr("Skin"), {QString::number(index), Skin::name(index)});
        m_accounts.changeSkin(index);
    };
    observer->onOpenBaseInfoSetting = [this] {
        asked("open the base-information settings", tr("Open the base-information settings"));
    };
    observer->onRequest = [this](const std::string& url) {
        asked("show the page", tr("Show the page"), detail("%1", text(url)));
    };
    observer->onPipeClosed = [] {
        say(QStringLiteral("the host has gone"));
        QCoreApplication::quit();
    };
    return observer;
}
