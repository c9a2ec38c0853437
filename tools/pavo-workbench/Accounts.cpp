#include "tools/pavo-workbench/Accounts.h"

#include "tools/pavo-workbench/AccountTexts.h"
#include "tools/pavo-workbench/Say.h"

#include <QCoreApplication>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr const char* kAppId = "im.waiter";
constexpr const char* kClassName = "PavoWorkbench";

/// Unlike any other window's title that another installation of the user has.
QString titleOf(const std::string& pin)
{
    return QStringLiteral("%1 - %2").arg(QString::fromStdString(pin),
                                         QCoreApplication::applicationName());
}

QString windowText(const Accounts::MainWindow& window)
{
    if (!window.visible)
        return QStringLiteral("window hidden");
    return QStringLiteral("window shown, state %1, %2x%3 at %4,%5")
        .arg(window.state)
        .arg(window.rect.width())
        .arg(window.rect.height())
        .arg(window.rect.x())
        .arg(window.rect.y());
}

/// Nothing when there is nothing to see of it, or when its far corner is beyond all numbers.
std::optional<QRect> rectangle(int x, int y, int width, int height)
{
    constexpr int kFarthest = std::numeric_limits<int>::max();
    if (width < 1 || height < 1 || x > kFarthest - width || y > kFarthest - height)
        return std::nullopt;
    return QRect(x, y, width, height);
}

} // namespace

Accounts::Accounts()
    : m_manager(MAManager::Instance())
{
    auto* observer = new MAObserver;
    observer->messageCallback = [this](int code, MASelectedAccount& selected,
                                       std::list<MAAccountInfo>& list) {
        take(code, selected, list);
    };
    observer->loginStateCallback = [this](int state) {
        say(QStringLiteral("account login state %1 is wanted").arg(state));
        Q_EMIT loginStateWanted(state);
    };
    m_manager->addObserver(observer);
    QCoreApplication::instance()->installNativeEventFilter(this);
}

Accounts::~Accounts()
{
    quit();
    m_manager->removeObserver();
}

void Accounts::enterMainWindow()
{
    m_entered = true;
    if (m_manager->isSelectedAccount())
        bringBack();
}

void Accounts::join(const std::string& pin)
{
    if (hasJoined())
        return;
    // The others look for it as soon as they see the account.
    m_messageWindow.emplace(QLatin1String(kClassName), titleOf(pin));
    m_messageWindow->setVisible(m_mainWindow.visible);
    const bool joined =
        m_manager->initManager(kAppId, pin, kClassName, titleOf(pin).toStdString(), m_skin);
    say(QStringLiteral("account %1 %2")
            .arg(QString::fromStdString(pin),
                 QLatin1String(joined ? "has joined" : "could not join")));
    if (!joined)
        return;
    // Were its presence still that of an earlier stay, nobody would be told of it, and nobody see
    // the list in which the account is back.
    changeLoginState(0);
    m_isApart = !selected().mergeWindow();
    if (!m_manager->isSelectedAccount())
        stepBack();
    else if (m_entered)
        bringBack();
    Q_EMIT changed();
}

void Accounts::quit()
{
    if (m_manager->quitCurrentAccount() != 1)
        return;
    say(QStringLiteral("account %1 has quit").arg(pin()));
    m_list.clear();
    stepBack();
    m_messageWindow.reset();
    Q_EMIT changed();
}

QString Accounts::pin() const
{
    return QString::fromStdString(m_manager->currentPin());
}

MASelectedAccount Accounts::selected() const
{
    MASelectedAccount selected;
    m_manager->selectedAccount(selected);
    return selected;
}

void Accounts::switchTo(const QString& pin)
{
    const auto found =
        std::find_if(m_list.begin(), m_list.end(), [&](const MAAccountInfo& account) {
            return pin == QString::fromStdString(account.pin);
        });
    if (found == m_list.end())
        say(QStringLiteral("there is no account %1").arg(pin));
    else
        m_manager->switchToAccount(*found);
}

void Accounts::bringToFront()
{
    if (hasJoined())
        m_manager->switchToCurrentPin();
}

void Accounts::popUp(bool show)
{
    if (!hasJoined())
        return;
    m_manager->popupMainWindow(show);
    // It may have taken the front over from a window that was minimised.
    if (show && m_mainWindow.visible && m_mainWindow.state == kMAMinimised) {
        m_mainWindow.state = kMANormal;
        bringBack();
    }
}

void Accounts::hide()
{
    // First into the record, where whoever wants the window back looks for it.
    hideOwn();
    m_manager->switchedHide();
}

void Accounts::minimise()
{
    m_mainWindow.state = kMAMinimised;
    bringBack();
}

void Accounts::maximise()
{
    m_mainWindow.state = kMAMaximised;
    bringBack();
}

void Accounts::place(int x, int y, int width, int height)
{
    const std::optional<QRect> rect = rectangle(x, y, width, height);
    if (!rect) {
        say(QStringLiteral("there is no such place for a window"));
        return;
    }
    m_mainWindow.state = kMANormal;
    m_mainWindow.rect = *rect;
    bringBack();
}

void Accounts::toggle()
{
    // A process never posts to itself.
    if (m_manager->isSelectedAccount())
        toggleOwn();
    else
        m_manager->switchShowState();
}

void Accounts::setMerged(bool merged)
{
    m_manager->changeMergeMode(merged ? kMAMerged : kMASeparate, true);
    Q_EMIT changed();
}

void Accounts::sort(const QStringList& pins)
{
    std::map<std::string, int> positions;
    for (const QString& pin : pins)
        positions.emplace(pin.toStdString(), static_cast<int>(positions.size()));
    m_manager->sortAllAccount(positions);
}

void Accounts::mainWindowChanged(int state, const QRect& rect)
{
    m_mainWindow.state = state;
    if (state == kMANormal && !rect.isNull())
        m_mainWindow.rect = rect;
    m_manager->windowStateChanged(state, rect);
    Q_EMIT changed();
}

void Accounts::takeHostSettings()
{
    const bool wasApart = std::exchange(m_isApart, !selected().mergeWindow());
    // Only the others have been told. Merged, the list from the time apart is this account alone;
    // apart, the window may be hidden for another one.
    if (hasJoined() && wasApart != m_isApart && m_manager->isSelectedAccount())
        m_manager->popupMainWindow(true);
    Q_EMIT changed();
}

void Accounts::changeSkin(int skin)
{
    m_skin = skin;
    if (hasJoined())
        m_manager->changeCurrentSkin(skin);
    Q_EMIT changed();
}

void Accounts::changeUnread(int count)
{
    m_manager->changeCurrentUnread(count);
}

void Accounts::changeUnreadMark(int mark)
{
    m_manager->changeCurrentUnreadMark(mark);
}

void Accounts::changeLoginState(int state)
{
    m_loginState = state;
    if (hasJoined())
        m_manager->changeLoginState(state);
    Q_EMIT changed();
}

void Accounts::switchOthersLoginState(int state)
{
    m_manager->switchLoginState(state);
}

void Accounts::sayFront() const
{
    say(AccountTexts::front(selected()));
}

void Accounts::sayList() const
{
    say(AccountTexts::list(m_list));
}

void Accounts::sayVisible() const
{
    say(QLatin1String(m_manager->checkWindowVisible() ? "the merged window is on screen"
                                                      : "no merged window is on screen"));
}

bool Accounts::nativeEventFilter(const QByteArray& type, void* message, long* /*result*/)
{
    // Other systems' events have other types.
    if (type != "windows_generic_MSG")
        return false;
    const auto* posted = static_cast<const MSG*>(message);
    return m_manager->handleNativeEvent(posted->message, static_cast<long>(posted->wParam),
                                        static_cast<long>(posted->lParam));
}

void Accounts::take(int code, const MASelectedAccount& selected,
                    const std::list<MAAccountInfo>& list)
{
    say(QStringLiteral("account code %1, %2, %3")
            .arg(code)
            .arg(AccountTexts::front(selected), AccountTexts::list(list)));
    m_isApart = !selected.mergeWindow();
    if (!list.empty())
        m_list = list;
    switch (code) {
    case kMAShow:
        takeFront(selected);
        break;
    case kMAStepBack:
        stepBack();
        break;
    case kMAHiddenByUser:
        // By way of another account's process: the window is this one's all the same.
        hideOwn();
        break;
    case kMAPopUp:
        bringBack();
        break;
    case kMAToggle:
        toggleOwn();
        break;
    default:
        break;
    }
    Q_EMIT changed();
}

void Accounts::takeFront(const MASelectedAccount& selected)
{
    const bool comesBack = selected.windowState < kMANormal || selected.windowState >= kMAHidden;
    m_mainWindow.state = comesBack ? kMANormal : selected.windowState;
    m_mainWindow.rect =
        rectangle(selected.x, selected.y, selected.w, selected.h).value_or(m_mainWindow.rect);
    bringBack();
}

void Accounts::stepBack()
{
    setVisible(false);
}

void Accounts::bringBack()
{
    setVisible(true);
    report();
}

void Accounts::hideOwn()
{
    setVisible(false);
    m_manager->windowStateChanged(kMAHidden, m_mainWindow.rect);
    Q_EMIT changed();
}

void Accounts::toggleOwn()
{
    if (m_mainWindow.visible)
        hide();
    else
        bringBack();
}

void Accounts::setVisible(bool visible)
{
    m_mainWindow.visible = visible;
    if (m_messageWindow)
        m_messageWindow->setVisible(visible);
    QString text = windowText(m_mainWindow);
    if (text != m_said)
        say(text);
    m_said = std::move(text);
    Q_EMIT mainWindowWanted();
}

void Accounts::report()
{
    // How large it is when it is not normal only a screen can say.
    const bool isNormal = m_mainWindow.state == kMANormal;
    m_manager->windowStateChanged(m_mainWindow.state, isNormal ? m_mainWindow.rect : QRect());
    Q_EMIT changed();
}
