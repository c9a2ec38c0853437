// Switching between accounts, and keeping their windows and records in step.

#include "ipc/MultiAccount/MAManager.h"

#include "ipc/MultiAccount/MAMutex.h"
#include "ipc/MultiAccount/MAWindow.h"
#include "pavo_base/Logger.h"
#include "platform/Win32.h"

#include <log4cplus/loggingmacros.h>

// By value, as its callers know it.
bool MAManager::switchToAccount(MAAccountInfo account)
{
    if (!m_initialized || account.pin.empty())
        return false;
    MASelectedAccount selected;
    {
        const MAMutex lock(&m_sharedMemory);
        if (!readSelectedAccount(selected))
            return false;
        // Only the place of the window: the target enters itself as the selected account.
        selected.setWindowRect(m_windowRect, m_windowState);
        writeSelectedAccount(selected);
    }
    if (selected.mergeWindow())
        postProcessMessage(account.className, account.title, kMAShow, 0);
    return true;
}

bool MAManager::switchToCurrentPin()
{
    showCurrentAccount();
    return true;
}

void MAManager::showCurrentAccount()
{
    m_ownAccount.unreadMark = 0;
    MASelectedAccount previous;
    MASelectedAccount next;
    std::list<MAAccountInfo> accounts;
    {
        const MAMutex lock(&m_sharedMemory);
        if (readSelectedAccount(previous)) {
            next = previous;
            next.setAccount(m_ownAccount.appID, m_ownAccount.pin, m_ownAccount.className,
                            m_ownAccount.title);
            writeSelectedAccount(next);
            readAllAccount(accounts);
            MAAccountInfo* const own = findOwn(accounts);
            if (own && own->unreadMark != 0) {
                own->unreadMark = 0;
                writeAllAccount(accounts);
            }
        }
    }
    LOG4CPLUS_DEBUG(Logger::logger(), "switch to account, " << next.title);
    setWindowState(previous.windowState);
    if (previous.mergeWindow())
        postProcessMessage(previous.className, previous.title, kMAStepBack, 0);
    postLocalMessage(kMAShow, next, accounts);
}

bool MAManager::popupMainWindow(bool show)
{
    MASelectedAccount selected;
    std::list<MAAccountInfo> accounts;
    {
        const MAMutex lock(&m_sharedMemory);
        if (readSelectedAccount(selected))
            readAllAccount(accounts);
    }
    const bool merged = selected.mergeWindow();
    const bool hidden = (merged ? selected.windowState : m_windowState) == kMAHidden;
    if (show && (!merged || hidden || selected.windowState == kMAMinimised)) {
        showCurrentAccount();
    } else if (show || hidden) {
        const int code = show ? kMAShow : kMAPopUp;
        // The pin alone decides: one pin is in front once, whatever its session is called.
        if (!merged || selected.pin == m_ownAccount.pin)
            postLocalMessage(code, selected, accounts);
        else
            postProcessMessage(selected.className, selected.title, static_cast<unsigned>(code), 0);
    }
    return true;
}

bool MAManager::checkWindowVisible()
{
    if (!m_initialized)
        return false;
    MASelectedAccount selected;
    {
        const MAMutex lock(&m_sharedMemory);
        if (!readSelectedAccount(selected))
            return false;
    }
    if (!selected.mergeWindow())
        return false;
    HWND window = findMAWindow(selected.className, selected.title);
    return window && IsWindowVisible(window) != 0;
}

void MAManager::switchShowState()
{
    LOG4CPLUS_INFO(Logger::logger(), "MAManager::switchShowState"
                                         << " enter");
    if (postToSelected(kMAToggle))
        LOG4CPLUS_INFO(Logger::logger(), "MAManager::switchShowState"
                                             << " leave");
}

void MAManager::switchedHide()
{
    LOG4CPLUS_INFO(Logger::logger(), "MAManager::switchedHide"
                                         << " enter");
    setWindowState(kMAHidden);
    if (postToSelected(kMAHiddenByUser))
        LOG4CPLUS_INFO(Logger::logger(), "MAManager::switchedHide"
                                             << " leave");
}

bool MAManager::postToSelected(unsigned int code)
{
    if (!m_initialized)
        return false;
    MASelectedAccount selected;
    {
        const MAMutex lock(&m_sharedMemory);
        if (!readSelectedAccount(selected))
            return false;
    }
    postProcessMessage(selected.className, selected.title, code, 0);
    return true;
}

void MAManager::setWindowState(int state)
{
    LOG4CPLUS_DEBUG(Logger::logger(), m_ownAccount.pin << ", window state, " << state);
    m_windowState = state;
}

bool MAManager::updateWindowSize(int state, const QRect& rect)
{
    if (rect.isNull())
        return false;
    const QSize size = rect.size();
    if (state == kMAMaximised) {
        m_largestSize = size;
    } else if (state == kMANormal) {
        // A restored window as large as the maximised one is still on its way back.
        const bool asLargeAsMaximised = !m_largestSize.isEmpty() &&
                                        size.width() >= m_largestSize.width() &&
                                        size.height() >= m_largestSize.height();
        if (!asLargeAsMaximised) {
            if (rect == m_windowRect)
                return false;
            m_windowRect = rect;
            return true;
        }
    }
    LOG4CPLUS_DEBUG(Logger::logger(), m_ownAccount.pin << ", window max w, "
                                                       << m_largestSize.width() << ", h, "
                                                       << m_largestSize.height());
    return false;
}

void MAManager::windowStateChanged(int state, const QRect& rect)
{
    if (!m_initialized)
        return;
    const bool changed = updateWindowSize(state, rect);
    if (state == m_windowState && !changed)
        return;
    setWindowState(state);
    LOG4CPLUS_DEBUG(Logger::logger(), m_ownAccount.pin << ", states " << state << ", w, "
                                                       << m_windowRect.width() << ", h, "
                                                       << m_windowRect.height());
    const MAMutex lock(&m_sharedMemory);
    MASelectedAccount selected;
    // Only the process in front says where the window is.
    if (readSelectedAccount(selected) && isOwn(selected)) {
        selected.setWindowRect(m_windowRect, m_windowState);
        writeSelectedAccount(selected);
    }
}

void MAManager::changeMergeMode(int mode, bool notify)
{
    LOG4CPLUS_DEBUG(Logger::logger(), "change merge, " << mode);
    m_mergeMode = mode;
    if (!m_initialized)
        return;
    MASelectedAccount selected;
    std::list<MAAccountInfo> accounts;
    {
        const MAMutex lock(&m_sharedMemory);
        if (!readSelectedAccount(selected) || selected.mode == mode)
            return;
        selected.mode = mode;
        if (selected.mergeWindow()) {
            selected.setWindowRect(m_windowRect, m_windowState);
            selected.setAccount(m_ownAccount.appID, m_ownAccount.pin, m_ownAccount.className,
                                m_ownAccount.title);
        }
        writeSelectedAccount(selected);
        readAllAccount(accounts);
    }
    for (const MAAccountInfo& account : accounts) {
        if (!selected.mergeWindow())
            postProcessMessage(account.className, account.title, kMAShow, 0);
        else if (!account.equalAccount(selected.appID, selected.pin))
            postProcessMessage(account.className, account.title, kMAStepBack, 0);
    }
    if (notify)
        postLocalMessage(kMAShow, selected, accounts);
}

void MAManager::changeCurrentSkin(int skin)
{
    changeOwn(&MAAccountInfo::skin, skin);
}

void MAManager::changeLoginState(int state)
{
    changeOwn(&MAAccountInfo::loginState, state);
}

void MAManager::changeOwn(int MAAccountInfo::*field, int value)
{
    if (m_ownAccount.*field == value)
        return;
    m_ownAccount.*field = value;
    MASelectedAccount selected;
    std::list<MAAccountInfo> accounts;
    modifyShareMemory(selected, accounts, nullptr, [&](std::list<MAAccountInfo>& list) {
        if (MAAccountInfo* const own = findOwn(list))
            own->*field = value;
    });
    if (selected.mergeWindow())
        postProcessMessage(selected.className, selected.title, kMAListChanged, 0);
    postLocalMessage(kMAListChanged, selected, accounts);
}

void MAManager::changeCurrentUnread(int count)
{
    if (m_ownAccount.unread == count)
        return;
    const bool more = count > m_ownAccount.unread;
    if (more)
        m_ownAccount.unreadMark = 1;
    m_ownAccount.unread = count;
    MASelectedAccount selected;
    std::list<MAAccountInfo> accounts;
    {
        const MAMutex lock(&m_sharedMemory);
        if (!readSelectedAccount(selected))
            return;
        // What is in front is being read.
        if (isOwn(selected))
            m_ownAccount.unreadMark = 0;
        readAllAccount(accounts);
        if (MAAccountInfo* const own = findOwn(accounts)) {
            own->unread = count;
            own->unreadMark = m_ownAccount.unreadMark;
        }
        writeAllAccount(accounts);
    }
    if (selected.mergeWindow())
        postProcessMessage(selected.className, selected.title, kMAMarkChanged, more ? 1 : 0);
    if (!selected.mergeWindow() || isOwn(selected))
        postLocalMessage(kMAListChanged, selected, accounts);
}

void MAManager::changeCurrentUnreadMark(int mark)
{
    if (m_ownAccount.unreadMark == mark)
        return;
    m_ownAccount.unreadMark = mark;
    MASelectedAccount selected;
    {
        const MAMutex lock(&m_sharedMemory);
        if (!readSelectedAccount(selected))
            return;
        if (isOwn(selected))
            m_ownAccount.unreadMark = 0;
        std::list<MAAccountInfo> accounts;
        readAllAccount(accounts);
        if (MAAccountInfo* const own = findOwn(accounts))
            own->unreadMark = m_ownAccount.unreadMark;
        writeAllAccount(accounts);
    }
    if (selected.mergeWindow() && m_ownAccount.unreadMark == 1)
        postProcessMessage(selected.className, selected.title, kMAMarkChanged, 1);
}

bool MAManager::switchLoginState(int state)
{
    std::list<MAAccountInfo> accounts;
    bool isRead = false;
    {
        const MAMutex lock(&m_sharedMemory);
        isRead = readAllAccount(accounts);
    }
    for (const MAAccountInfo& account : accounts)
        postProcessMessage(account.className, account.title, kMALoginState, state);
    return isRead;
}

bool MAManager::sortAllAccount(const std::map<std::string, int>& positions)
{
    if (!m_initialized)
        return false;
    const MAMutex lock(&m_sharedMemory);
    std::list<MAAccountInfo> accounts;
    readAllAccount(accounts);
    int behind = static_cast<int>(positions.size());
    for (MAAccountInfo& account : accounts) {
        const auto position = positions.find(account.pin);
        account.idx = position == positions.end() ? behind++ : position->second;
    }
    accounts.sort(&MAAccountInfo::compareByIndex);
    if (!accounts.empty())
        writeAllAccount(accounts);
    return true;
}

bool MAManager::selectedAccount(MASelectedAccount& out)
{
    bool isRead = false;
    {
        const MAMutex lock(&m_sharedMemory);
        isRead = readSelectedAccount(out);
    }
    LOG4CPLUS_DEBUG(Logger::logger(),
                    "SelectedAccount " << out.pin << ", w, " << out.w << ", h, " << out.h);
    return isRead;
}
