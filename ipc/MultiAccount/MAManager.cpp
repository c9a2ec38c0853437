// Joining and leaving the shared account list.

#include "ipc/MultiAccount/MAManager.h"

#include "ipc/MultiAccount/MAMutex.h"
#include "pavo_base/Logger.h"

#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <iterator>

std::shared_ptr<MAManager> MAManager::Instance()
{
    // Local, so that it is destroyed before the globals of Qt, which detaching needs.
    static const std::shared_ptr<MAManager> instance(new MAManager);
    return instance;
}

MAManager::MAManager() = default;

MAManager::~MAManager()
{
    detach();
    // The main window may still be inside the observer, and a read inside the buffer: both stay,
    // within reach, until the process takes them along.
    [[maybe_unused]] static const void* volatile left[2];
    left[0] = m_observer.release();
    left[1] = m_scratchBuffer.release();
}

bool MAManager::initManager(const std::string& appID, const std::string& pin,
                            const std::string& className, const std::string& title, int skin)
{
    if (!appID.empty() && !pin.empty())
        LOG4CPLUS_DEBUG(Logger::logger(), "init ma manager, pin " << appID << "," << pin << ","
                                                                  << className << "," << title);
    else
        LOG4CPLUS_WARN(Logger::logger(), "init ma error, pin:" << pin);
    m_ownAccount.setAccount(appID, pin, className, title, skin, 0);

    const char* failure = "";
    if (!createShareMemory()) {
        failure = " create share memory failed";
    } else {
        makeScratchBuffer();
        m_initialized = true;
        MASelectedAccount selected;
        {
            const MAMutex lock(&m_sharedMemory);
            if (!addCurrentAccount(selected)) {
                m_initialized = false;
                failure = " add current account failed";
            }
        }
        if (selected.mode != m_mergeMode)
            changeMergeMode(m_mergeMode, false);
    }

    if (m_initialized)
        LOG4CPLUS_DEBUG(Logger::logger(),
                        "multi account init success, " << title << ", mid " << m_messageId);
    else
        LOG4CPLUS_ERROR(Logger::logger(), pin << " " << failure);
    return m_initialized;
}

bool MAManager::addCurrentAccount(MASelectedAccount& selected)
{
    std::list<MAAccountInfo> accounts;
    readAllAccount(accounts);
    bool found = false;
    int position = 0;
    for (MAAccountInfo& account : accounts) {
        account.idx = position++;
        if (isOwn(account)) {
            account.title = m_ownAccount.title;
            account.unread = m_ownAccount.unread;
            account.unreadMark = m_ownAccount.unreadMark;
            account.skin = m_ownAccount.skin;
            found = true;
        }
    }
    if (!found) {
        // One more than the next free index: the gap tells a newcomer from the renumbered ones.
        m_ownAccount.idx = position + 1;
        accounts.push_back(m_ownAccount);
    }
    writeAllAccount(accounts);
    if (!readSelectedAccount(selected))
        return false;
    if (selected.pin.empty()) {
        selected.setAccount(m_ownAccount.appID, m_ownAccount.pin, m_ownAccount.className,
                            m_ownAccount.title);
        selected.mode = m_mergeMode;
        writeSelectedAccount(selected);
    }
    return true;
}

int MAManager::quitCurrentAccount()
{
    if (!m_initialized)
        return -1;
    MASelectedAccount selected;
    std::list<MAAccountInfo> accounts;
    MAAccountInfo neighbour;
    {
        const MAMutex lock(&m_sharedMemory);
        if (!readSelectedAccount(selected))
            return -1;
        readAllAccount(accounts);
        auto own = std::find_if(accounts.begin(), accounts.end(),
                                [this](const MAAccountInfo& account) { return isOwn(account); });
        const bool isFirst = own == accounts.begin();
        if (!isFirst)
            neighbour = *std::prev(own);
        if (own != accounts.end())
            own = accounts.erase(own);
        if (isFirst && own != accounts.end())
            neighbour = *own;
        writeAllAccount(accounts);
    }
    if (selected.mergeWindow() && !accounts.empty() && isOwn(selected))
        switchToAccount(neighbour);
    else
        postProcessMessage(selected.className, selected.title, kMAListChanged, 0);
    uninitManager();
    return 1;
}

void MAManager::uninitManager()
{
    detach();
    m_initialized = false;
    m_scratchBuffer.reset();
}

void MAManager::addObserver(MAObserver* observer)
{
    if (m_observer.get() == observer)
        return;
    m_observer.reset();
    m_observer.reset(observer);
}

void MAManager::removeObserver()
{
    m_observer.reset();
}

bool MAManager::isInit() const
{
    return m_initialized;
}

bool MAManager::isSelectedAccount()
{
    if (!m_initialized)
        return true;
    MASelectedAccount selected;
    selectedAccount(selected);
    return !selected.mergeWindow() || isOwn(selected);
}

int MAManager::loginAccountCount()
{
    std::list<MAAccountInfo> accounts;
    const MAMutex lock(&m_sharedMemory);
    readAllAccount(accounts);
    return static_cast<int>(accounts.size());
}

std::string MAManager::currentPin() const
{
    return m_ownAccount.pin;
}

bool MAManager::isOwn(const MAAccountInfo& account) const
{
    return account.equalAccount(m_ownAccount.appID, m_ownAccount.pin);
}

bool MAManager::isOwn(const MASelectedAccount& selected) const
{
    return m_ownAccount.equalAccount(selected.appID, selected.pin);
}

MAAccountInfo* MAManager::findOwn(std::list<MAAccountInfo>& accounts) const
{
    const auto own = std::find_if(accounts.begin(), accounts.end(),
                                  [this](const MAAccountInfo& account) { return isOwn(account); });
    return own == accounts.end() ? nullptr : &*own;
}
