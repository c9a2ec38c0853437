#pragma once

#include "../PavoIpcExport.h"
#include "MACodes.h"
#include "MAObserver.h"

#include <QRect>
#include <QSharedMemory>
#include <QSize>
#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>

struct MARegion;

/// Coordinates the workbench processes of one installation, one per logged-in account.
///
/// All of them share one list of accounts and the selected account, the one in front, in a segment
/// that lives as long as one of them is attached to it. In merged mode one window is visible at a
/// time, the selected account's; in separate mode each process shows its own. The processes post
/// window messages to one another that say no more than: look now.
///
/// Segment and window message are named after QCoreApplication::applicationName(), which has to be
/// set before KTChannelManager::startUp() or createShareMemory(), whichever is called first.
///
/// Instance() may be called from any thread, everything else from one thread only: the GUI thread.
/// Before initManager() has succeeded nothing is read, written or posted; what is then shown to the
/// own observer is a default record and an empty list.
class PAVO_IPC_EXPORT MAManager
{
public:
    /// The instance of this process, which lives until the library is unloaded.
    static std::shared_ptr<MAManager> Instance();

    MAManager();
    /// Leaves the segment but not the list, and leaves the observer alone: the main window may be
    /// gone already.
    ~MAManager();
    MAManager(const MAManager&) = delete;
    MAManager& operator=(const MAManager&) = delete;

    /// \name Joining and leaving
    /// @{

    /// Attaches the segment, or creates it as the first process. Returns whether the window message
    /// could be registered, which is tried first; a failure of the segment is logged and shows as
    /// later operations fail.
    bool createShareMemory();

    /// Enters this process's account in the shared list, and as the selected one when there is none
    /// yet. Returns isInit().
    bool initManager(const std::string& appID, const std::string& pin, const std::string& className,
                     const std::string& title, int skin);

    /// Takes this process's account out of the shared list, hands the front to a neighbour if it
    /// had it in merged mode, and leaves the segment. Returns 1, or -1 when nothing was done.
    int quitCurrentAccount();

    /// Whether this process's account has been entered, and not taken out since.
    [[nodiscard]] bool isInit() const;
    /// @}

    /// Takes ownership; an observer held before is deleted. Null leaves none.
    void addObserver(MAObserver* observer);
    /// Deletes the observer; nobody is told of anything from then on.
    void removeObserver();

    /// \name Queries
    /// @{

    /// Whether this process shows its window: also before initManager() and in separate mode.
    bool isSelectedAccount();
    /// How many accounts the list has; 0 also when it cannot be read.
    int loginAccountCount();
    /// This process's own pin, empty before initManager().
    [[nodiscard]] std::string currentPin() const;
    /// Reads the selected account. When that fails, `out` is left as it was.
    bool selectedAccount(MASelectedAccount& out);
    /// Whether the merged window is on screen.
    bool checkWindowVisible();
    /// @}

    /// \name Switching between accounts
    /// @{

    /// Hands the main window to another account's process; in separate mode nobody is told. Returns
    /// false, and does nothing, without a pin in `account` or when the segment cannot be read; that
    /// the window is not there is only logged.
    bool switchToAccount(MAAccountInfo account);
    /// Makes this process's account the selected one. Always true.
    bool switchToCurrentPin();
    /// Brings the main window up; with `show` false only if it is hidden. Always true.
    bool popupMainWindow(bool show);
    /// Asks the selected account's process to show or hide the merged window.
    void switchShowState();
    /// Merged (1) or separate (0) windows, for all processes. `notify` tells the own observer, too.
    /// Before initManager() it is remembered for then.
    void changeMergeMode(int mode, bool notify);
    /// @}

    /// \name What the workbench reports
    /// What is as it was is not told anew.
    /// @{

    /// The user has hidden the merged window.
    void switchedHide();
    /// The own window has this MAWindowState and, in screen pixels, this place. A null `rect` says
    /// nothing of the place.
    void windowStateChanged(int state, const QRect& rect);
    /// Index of the account's skin, 0 to 5.
    void changeCurrentSkin(int skin);
    /// So many messages of this account are unread. More than before set its mark, unless it is in
    /// front.
    void changeCurrentUnread(int count);
    /// 1 when there is more to read than when the account was last looked at, or else 0.
    void changeCurrentUnreadMark(int mark);
    /// The account's presence.
    void changeLoginState(int state);
    /// @}

    /// Asks every other process to switch to a login state. Returns whether the list could be read.
    bool switchLoginState(int state);

    /// Puts the accounts with these pins at these positions, the others behind them.
    bool sortAllAccount(const std::map<std::string, int>& positions);

    /// Has to be given every native window message from when createShareMemory() has returned true:
    /// before it takes messages of number 0. Returns true for those of the manager. Of both
    /// parameters the lower 32 bits count.
    bool handleNativeEvent(unsigned int message, long wParam, long lParam);

private:
    friend class MAManagerProbe;

    void uninitManager();
    bool addCurrentAccount(MASelectedAccount& selected);
    [[nodiscard]] bool isOwn(const MAAccountInfo& account) const;
    [[nodiscard]] bool isOwn(const MASelectedAccount& selected) const;
    MAAccountInfo* findOwn(std::list<MAAccountInfo>& accounts) const;

    // The shared segment. The caller holds an MAMutex over it, but for modifyShareMemory.
    bool readSelectedAccount(MASelectedAccount& out);
    bool readAllAccount(std::list<MAAccountInfo>& out);
    bool writeSelectedAccount(const MASelectedAccount& in);
    bool writeAllAccount(const std::list<MAAccountInfo>& in);
    void modifyShareMemory(MASelectedAccount& selected, std::list<MAAccountInfo>& list,
                           const std::function<void(MASelectedAccount&)>& editSelected,
                           const std::function<void(std::list<MAAccountInfo>&)>& editList);
    void detach();
    [[nodiscard]] bool isStoreOpen() const;
    [[nodiscard]] bool hasBytes(int size) const;
    void makeScratchBuffer();
    /// Copies the text of a region, so that it cannot change any more, and returns its length.
    int copyToScratch(const MARegion& region);

    // Window messages.
    bool registerWindowMessage(const QString& name);
    void postProcessMessage(const std::string& className, const std::string& title,
                            std::uint64_t wParam, std::int64_t lParam);
    void postLocalMessage(int code, MASelectedAccount& selected,
                          std::list<MAAccountInfo>& accounts);
    void relay(std::initializer_list<int> codes, bool withAccounts);
    void maPointer(const std::string& text);

    // Switching and window state.
    void showCurrentAccount();
    void setWindowState(int state);
    bool updateWindowSize(int state, const QRect& rect);
    bool postToSelected(unsigned int code);
    void changeOwn(int MAAccountInfo::*field, int value);

    std::unique_ptr<MAObserver> m_observer;
    MAAccountInfo m_ownAccount;
    int m_windowState = kMANormal;
    QRect m_windowRect;
    QSize m_largestSize; ///< of the window when it was maximised
    std::unique_ptr<char[]> m_scratchBuffer;
    unsigned int m_messageId = 0;
    QSharedMemory m_sharedMemory;
    int m_mergeMode = kMAMerged;
    std::atomic<bool> m_initialized{false};
};
