#pragma once

#include "KTKeyInfo.h"
#include "PavoIpcExport.h"

#include <QString>

#include <functional>
#include <string>
#include <vector>

/// What the workbench handed to start-up, and what the host asked for before the main window
/// existed. Texts are UTF-8. A plain value.
struct PAVO_IPC_EXPORT KTStartUpContext
{
    /// \name A plain value
    /// @{

    /// Constructs, copies, moves or destroys it member by member.
    KTStartUpContext();
    KTStartUpContext(const KTStartUpContext& other);
    KTStartUpContext(KTStartUpContext&& other) noexcept;
    KTStartUpContext& operator=(const KTStartUpContext& other);
    KTStartUpContext& operator=(KTStartUpContext&& other) noexcept;
    ~KTStartUpContext();
    /// @}

    /// Called on the GUI thread with (1, account pin, skin name) when the host logs the workbench
    /// in, and with (-1, empty, empty) when the host goes away before the main window is entered.
    /// The skin is `skinName` below.
    std::function<void(int, std::string, const QString)> startUpCallback;
    /// Called with (application name, account pin) when the login service has taken the pin, on the
    /// login service's own thread.
    std::function<void(std::string, const QString)> pinChangedCallback;

    /// \name The parked requests
    /// Each is replayed once when the main window is entered.
    /// @{
    std::vector<KTKeyInfo> hotKeys;   ///< Empty: none parked.
    std::vector<KTKeyInfo> shortcuts; ///< Empty: none parked.
    std::string skinName;             ///< In the workbench: "blue", "orange", "green", "red",
                                      ///< "geekblue" or "purple"; empty: none parked.
    int windowType = 0;               ///< A conversation's kind; above 0: it is parked.
    std::string windowText1;          ///< Its second text.
    std::string windowText2;          ///< Its first text.
    std::string groupText1;           ///< A group's second text.
    std::string groupText2;           ///< Its first text; not empty: it is parked.
    /// @}
};
