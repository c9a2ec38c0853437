#pragma once

#include "PavoIpcExport.h"

#include <Qt>

#include <string>

/// One hot key or shortcut as the host defines it. A plain value.
struct PAVO_IPC_EXPORT KTKeyInfo
{
    /// \name A plain value
    /// @{

    /// Constructs, copies, moves or destroys it member by member.
    KTKeyInfo();
    KTKeyInfo(const KTKeyInfo& other);
    KTKeyInfo(KTKeyInfo&& other) noexcept;
    KTKeyInfo& operator=(const KTKeyInfo& other);
    KTKeyInfo& operator=(KTKeyInfo&& other) noexcept;
    ~KTKeyInfo();
    /// @}

    /// Whether the definition is in force. One that is not is handed on all the same.
    bool valid = false;
    /// What the key triggers: the host's own name for it, in UTF-8.
    std::string functionName;
    /// Qt::Key_unknown if the host's code is not a key.
    Qt::Key key = Qt::Key(0);
    /// Any of Alt, Control, Shift and Meta, which is the Windows key.
    Qt::KeyboardModifiers modifiers;
};
