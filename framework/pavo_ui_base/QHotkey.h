#pragma once

#include "pavo_ui_base/Export.h"

#include <QtCore/Qt>

/// Translation of Windows key codes into Qt's. Works on every platform; any thread may call.
class PAVO_UI_BASE_EXPORT QHotkey
{
public:
    QHotkey() = delete;

    /// The key of a Windows virtual-key code. Keys of punctuation are those of the US layout; left
    /// and right variants and the keypad's digits give the plain key. \return Qt::Key_unknown for
    /// mouse buttons, for codes without a key in Qt and for anything that is no virtual key.
    static Qt::Key nativeKey2QT(unsigned nativeKey);

    /// The modifiers of a mask as RegisterHotKey takes it: 1 Alt, 2 Control, 4 Shift, 8 Windows
    /// (Qt's Meta). Other bits are ignored.
    static Qt::KeyboardModifiers nativeModifier2QT(unsigned nativeModifiers);
};
