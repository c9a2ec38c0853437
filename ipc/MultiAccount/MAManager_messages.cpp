// The window messages that the processes post to one another.

#include "ipc/MultiAccount/MAManager.h"

#include "ipc/MultiAccount/MAMutex.h"
#include "ipc/MultiAccount/MAWindow.h"
#include "pavo_base/Logger.h"
#include "pavo_base/OSUtils.h"
#include "platform/Win32.h"

#include <log4cplus/loggingmacros.h>

#include <limits>

namespace {

/// Lets processes of lower integrity post the message, too.
constexpr unsigned long kAddToFilter = 1;

/// Whether the far edges of the record's rectangle are numbers, too.
bool hasEdges(const MASelectedAccount& selected)
{
    constexpr auto kMax = std::numeric_limits<int>::max();
    return (selected.x <= 0 || selected.w <= kMax - selected.x) &&
           (selected.y <= 0 || selected.h <= kMax - selected.y);
}

} // namespace

bool MAManager::registerWindowMessage(const QString& name)
{
    if (name.isEmpty())
        return false;
    if (m_messageId != 0)
        return true;
    m_messageId = RegisterWindowMessageW(name.toStdWString().c_str());
    if (m_messageId == 0)
        LOG4CPLUS_ERROR(Logger::logger(), "register message failed");
    else
        OSUtils::changeWindowMessageFilter(m_messageId, kAddToFilter);
    return m_messageId != 0;
}

void MAManager::postProcessMessage(const std::string& className, const std::string& title,
                                   std::uint64_t wParam, std::int64_t lParam)
{
    LOG4CPLUS_DEBUG(Logger::logger(), "post process message, " << title << ", param" << wParam);
    if (!m_initialized || title.empty() || title == m_ownAccount.title)
        return;
    HWND window = findMAWindow(className, title);
    if (!window || !IsWindow(window)) {
        LOG4CPLUS_ERROR(Logger::logger(), "not find window, " << title);
        return;
    }
    if (!PostMessageA(window, m_messageId, wParam, lParam)) {
        const DWORD error = GetLastError();
        LOG4CPLUS_ERROR(Logger::logger(), "post process message failed, " << error);
    }
}

void MAManager::postLocalMessage(int code, MASelectedAccount& selected,
                                 std::list<MAAccountInfo>& accounts)
{
    if (code == kMAShow && selected.w >= 1 && selected.h >= 1) {
        setWindowState(selected.windowState);
        if (hasEdges(selected))
            m_windowRect = QRect(selected.x, selected.y, selected.w, selected.h);
    }
    if (!m_observer)
        return;
    // The callback may hand over another observer: it runs as a copy.
    const auto messageCallback = m_observer->messageCallback;
    if (selected.mode != kMASeparate) {
        messageCallback(code, selected, accounts);
        return;
    }
    // Behind a window of its own a process is the selected account and the only one.
    selected.setAccount(m_ownAccount.appID, m_ownAccount.pin, m_ownAccount.className,
                        m_ownAccount.title);
    std::list<MAAccountInfo> onlyOwn{m_ownAccount};
    messageCallback(code, selected, onlyOwn);
}

bool MAManager::handleNativeEvent(unsigned int message, long wParam, long lParam)
{
    // Before registration this takes message 0, which has no other meaning to a window.
    if (message != m_messageId)
        return false;
    // A message's numbers have 32 bits wherever it is received, also where a long has more.
    const auto code = static_cast<std::int32_t>(wParam);
    const auto value = static_cast<std::int32_t>(lParam);
    LOG4CPLUS_DEBUG(Logger::logger(), "handle Native Event " << code << ", " << value);
    switch (code) {
    case kMAShow:
        showCurrentAccount();
        break;
    case kMAStepBack:
    case kMAPopUp:
        relay({code}, false);
        break;
    case kMAListChanged:
    case kMAHiddenByUser:
    case kMAToggle:
        relay({code}, true);
        break;
    case kMAMarkChanged:
        if (value == 1)
            relay({kMAListChanged, kMAMarkChanged}, true);
        else
            relay({kMAListChanged}, true);
        break;
    case kMALoginState:
        if (m_observer) {
            const auto loginStateCallback = m_observer->loginStateCallback;
            loginStateCallback(value);
        }
        break;
    default:
        LOG4CPLUS_WARN(Logger::logger(),
                       "unprocessed cross process messages " << code << ", " << value);
        break;
    }
    return true;
}

void MAManager::relay(std::initializer_list<int> codes, bool withAccounts)
{
    // What cannot be read counts as merged: the observer had better look once too often.
    MASelectedAccount selected;
    std::list<MAAccountInfo> accounts;
    {
        const MAMutex lock(&m_sharedMemory);
        readSelectedAccount(selected);
        if (withAccounts)
            readAllAccount(accounts);
    }
    if (!selected.mergeWindow())
        return;
    for (const int code : codes)
        postLocalMessage(code, selected, accounts);
}

// Part of what the class exports; whoever was built against it finds it, but it does nothing.
void MAManager::maPointer(const std::string& /*text*/) {}
