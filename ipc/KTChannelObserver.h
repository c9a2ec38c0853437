#pragma once

#include "KTKeyInfo.h"
#include "PavoIpcExport.h"

#include <QRect>

#include <functional>
#include <string>
#include <vector>

/// What the workbench's main window wants to be told. Each callable may be left unset. All are
/// called on the GUI thread and may do anything except throw, even enter the main window anew.
/// Texts are UTF-8. A plain value.
struct PAVO_IPC_EXPORT KTChannelObserver
{
    /// \name A plain value
    /// @{

    /// Constructs, copies, moves or destroys it member by member.
    KTChannelObserver();
    KTChannelObserver(const KTChannelObserver& other);
    KTChannelObserver(KTChannelObserver&& other) noexcept;
    KTChannelObserver& operator=(const KTChannelObserver& other);
    KTChannelObserver& operator=(KTChannelObserver&& other) noexcept;
    ~KTChannelObserver();
    /// @}

    /// Open a conversation: (kind, second text, first text) of the host's request.
    std::function<void(int, std::string, std::string)> onOpenLXWindow;
    /// Open a group: (second text, first text) of the host's request.
    std::function<void(std::string, std::string)> onOpenLXGroup;
    /// Show or hide the list of unread messages beside the tray icon at this place, which is in the
    /// host's units.
    std::function<void(bool, QRect)> onShowUnreadMessageList;
    /// All hot keys from now on.
    std::function<void(std::vector<KTKeyInfo>)> onHotKeyChanged;
    /// All shortcuts from now on.
    std::function<void(std::vector<KTKeyInfo>)> onShortcutChanged;
    /// Change to the skin of this index, 0 to 5.
    std::function<void(int)> onSkinChanged;
    /// Open the page of the base-information settings.
    std::function<void()> onOpenBaseInfoSetting;
    /// Show the page of the given URL.
    std::function<void(std::string)> onRequest;
    /// The host has gone; the channel stays closed.
    std::function<void()> onPipeClosed;
};
