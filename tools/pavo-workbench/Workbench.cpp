#include "tools/pavo-workbench/Workbench.h"

#include "ipc/KTChannelManager.h"
#include "pavo_core/SimulatedLoginService.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QStringList>

#include <cstdio>
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

void sayKeys(const QString& what, const std::vector<KTKeyInfo>& infos)
{
    QStringList texts;
    for (const KTKeyInfo& info : infos)
        texts << keyText(info);
    Workbench::say(QStringLiteral("%1: %2").arg(
        what, texts.isEmpty() ? QStringLiteral("none") : texts.join(QStringLiteral(", "))));
}

} // namespace

Workbench::Workbench(std::shared_ptr<SimulatedLoginService> loginService)
    : m_core(std::move(loginService))
{
    m_core.getCoreConfig().clientVersion = kClientVersion;
    PAVOCore::setShareInstance(&m_core);
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

void Workbench::enterMainWindow(unsigned code)
{
    say(QStringLiteral("enter the main window with code %1").arg(code));
    KTChannelManager::sharedInstance()->enterMainUI(code, makeObserver().release());
}

std::unique_ptr<KTChannelObserver> Workbench::makeObserver()
{
    auto observer = std::make_unique<KTChannelObserver>();
    observer->onOpenLXWindow = [](int kind, const std::string& second, const std::string& first) {
        say(QStringLiteral("open conversation %1, kind %2, %3")
                .arg(text(first))
                .arg(kind)
                .arg(text(second)));
    };
    observer->onOpenLXGroup = [](const std::string& second, const std::string& first) {
        say(QStringLiteral("open group %1, %2").arg(text(first), text(second)));
    };
    observer->onShowUnreadMessageList = [](bool show, const QRect& place) {
        say(QStringLiteral("%1 the unread messages at (%2, %3), %4 x %5")
                .arg(QLatin1String(show ? "show" : "hide"))
                .arg(place.x())
                .arg(place.y())
                .arg(qint64{place.right()} - place.left() + 1)
                .arg(qint64{place.bottom()} - place.top() + 1));
    };
    observer->onHotKeyChanged = [](const std::vector<KTKeyInfo>& infos) {
        sayKeys(QStringLiteral("hot keys"), infos);
    };
    observer->onShortcutChanged = [](const std::vector<KTKeyInfo>& infos) {
        sayKeys(QStringLiteral("shortcuts"), infos);
    };
    observer->onSkinChanged = [](int index) { say(QStringLiteral("skin %1").arg(index)); };
    observer->onOpenBaseInfoSetting = [] {
        say(QStringLiteral("open the base-information settings"));
    };
    observer->onRequest = [](const std::string& url) {
        say(QStringLiteral("show the page %1").arg(text(url)));
    };
    observer->onPipeClosed = [] {
        say(QStringLiteral("the host has gone"));
        QCoreApplication::quit();
    };
    return observer;
}

void Workbench::say(const QString& text)
{
    // In one go, so that lines of several threads stay whole.
    const QByteArray line = QStringLiteral("workbench: %1\n").arg(text).toUtf8();
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fflush(stdout);
}
