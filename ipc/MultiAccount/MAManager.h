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
/// They share the list of accounts and the selected account, the one in front, in a shared memory
/// segment that lives as long as one of them is attached. In merged mode one window is visible at a
/// time, the selected account's; in separate mode each process shows its own. The processes tell
/// one another by window messages to look into the segment.
///
/// Segment and window message are named after QCoreApplication::applicationName(), which has to be
/// set before KTChannelManager::startUp() or createShareMemory(), whichever comes first.
///
/// Call Instance() from any thread, everything else on the GUI thread. Whatever waits for the
/// segment's lock waits as long as another program holds it. Before initManager() has succeeded
/// nothing is read, written or posted; an observer called then gets a default record and an empty
/// list.
class PAVO_IPC_EXPORT MAManager
{
public:
    /// The instance of this process, which lives until the library is unloaded.
    static std::shared_ptr<MAManager> Instance();

    MAManager();
    /// Detaches from the segment, but leaves the account in the list. Does not delete the observer,
    /// which may be running.
    ~MAManager();
    MAManager(const MAManager&) = delete;
    MAManager& operator=(const MAManager&) = delete;

    /// \name Joining and leaving
    /// @{

    /// Registers the window message and attaches the segment, or creates it as the first process.
    /// Returns whether the message could be registered; if not, the segment is not touched. A
    /// failure of the segment is only logged, and makes initManager() fail.
    bool createShareMemory();

    /// Calls createShareMemory() and enters this process's account in the shared list, and as the
    /// selected one if there is none yet. Other processes find the window by class and title, so
    /// titles have to differ between accounts. `skin` is an index, 0 to 5. All texts are UTF-8.
    /// Returns isInit().
    bool initManager(const std::string& appID, const std::string& pin, const std::string& className,
                     const std::string& title, int skin);

    /// Removes this process's account from the shared list and detaches from the segment. If the
    /// account was in front in merged mode, a neighbour in the list takes the front. Returns 1, or
    /// -1 if nothing was done.
    int quitCurrentAccount();

    /// Whether this process's account has been entered and not removed since.
    [[nodiscard]] bool isInit() const;
    /// @}

    /// Takes ownership of `observer`; a different one held before is deleted. Null leaves none.
    void addObserver(MAObserver* observer);
    /// Deletes the observer, if there is one.
    void removeObserver();

    /// \name Queries
    /// @{

    /// Whether this process is to show its window. True also before initManager() and in separate
    /// mode.
    bool isSelectedAccount();
    /// The number of accounts in the list; 0 also if it cannot be read.
    int loginAccountCount();
    /// This process's own pin, empty before initManager().
    [[nodiscard]] std::string currentPin() const;
    /// Reads the selected account. Returns false, with `out` unchanged, if that fails.
    bool selectedAccount(MASelectedAccount& out);
    /// Whether the merged window is visible. False in separate mode, and if the list cannot be
    /// read.
    bool checkWindowVisible();
    /// @}

    /// \name Switching between accounts
    /// @{

    /// Hands the main window to another account's process, which is told only in merged mode.
    /// Returns false, and does nothing, if `account` has no pin or the segment cannot be read. A
    /// missing window is only logged.
    bool switchToAccount(MAAccountInfo account);
    /// Makes this process's account the selected one. Always returns true.
    bool switchToCurrentPin();
    /// With `show`, brings up the main window; if that is minimised or hidden, or in separate mode,
    /// this process's account becomes the selected one. Without `show`, brings back the window only
    /// if it is hidden, whichever account is selected. Always returns true.
    bool popupMainWindow(bool show);
    /// Asks the selected account's process to show or hide the merged window.
    void switchShowState();
    /// Sets merged (1) or separate (0) windows for all processes. The process that merges takes the
    /// front. With `notify` its own observer is told, too. Before initManager() the mode is
    /// remembered for then.
    void changeMergeMode(int mode, bool notify);
    /// @}

    /// \name What the workbench reports
    /// A value that has not changed is not passed on, except by switchedHide().
    /// @{

    /// The user has hidden the merged window.
    void switchedHide();
    /// This process's window has this MAWindowState and this place, in whatever units all
    /// workbenches use for theirs: other processes get it unchanged. A null `rect` leaves the place
    /// as it was. A normal window that is as large as it was maximised is on its way back, so its
    /// place is not remembered.
    void windowStateChanged(int state, const QRect& rect);
    /// The account's skin has this index, 0 to 5.
    void changeCurrentSkin(int skin);
    /// The account has `count` unread messages. More than before set its mark, unless it is in
    /// front.
    void changeCurrentUnread(int count);
    /// `mark` is 1 if more messages have come since the account was last in front, otherwise 0.
    void changeCurrentUnreadMark(int mark);
    /// The account has this presence, as the login service numbers it.
    void changeLoginState(int state);
    /// @}

    /// Asks every other process to switch to a login state. Returns whether the list could be read.
    bool switchLoginState(int state);

    /// Sorts the shared list by `positions`, which maps pins to positions. The other accounts
    /// follow in their present order. Returns isInit().
    bool sortAllAccount(const std::map<std::string, int>& positions);

    /// Pass every native window message to this once createShareMemory() has returned true; before
    /// that it takes messages of number 0. Returns true for messages of the manager, which are then
    /// done with. Only the lower 32 bits of both parameters count.
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
