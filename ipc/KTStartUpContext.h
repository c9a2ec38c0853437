#pragma once

#include "ipc/KTKeyInfo.h"
#include "ipc/PavoIpcExport.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

/// What the workbench handed to start-up, and what the host asked for before the main window
/// existed. Texts are UTF-8. A plain value.
struct PAVO_IPC_EXPORT KTStartUpContext
{
    KTStartUpContext();
    KTStartUpContext(const KTStartUpContext& other);
    KTStartUpContext(KTStartUpContext&& other) noexcept;
    KTStartUpContext& operator=(const KTStartUpContext& other);
    KTStartUpContext& operator=(KTStartUpContext&& other) noexcept;
    ~KTStartUpContext();

    /// Called on the GUI thread with (1, account pin, skin name) when the host logs the workbench
    /// in, and with (-1, empty, empty) when the host goes away before the main window is entered.
    std::function<void(int, std::string, const QString)> startUpCallback;
    /// Called with (application name, account pin) when the login service has taken the pin, on the
    /// login service's own thread.
    std::function<void(std::string, const QString)> pinChangedCallback;

    /// The parked requests: each is replayed once when the main window is entered.
    std::vector<KTKeyInfo> hotKeys;
    std::vector<KTKeyInfo> shortcuts;
    std::string skinName; ///< The workbench's own name of the skin; empty: none parked.
    int windowType = 0;   ///< Above 0: a conversation is parked.
    std::string windowText1;
    std::string windowText2;
    std::string groupText1;
    std::string groupText2; ///< Not empty: a group is parked.
};
