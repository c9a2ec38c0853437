#include "pavo_ui_base/QHotkey.h"

#include <algorithm>
#include <iterator>

namespace {

// Virtual-key codes from first to last stand for Qt keys that follow one another from key on, or,
// when same is set, all for key.
struct KeyRange
{
    unsigned first;
    unsigned last;
    Qt::Key key;
    bool same = false;
};

// In rising order, without overlaps.
constexpr KeyRange kKeys[] = {
    {0x03, 0x03, Qt::Key_Cancel},
    {0x08, 0x08, Qt::Key_Backspace},
    {0x09, 0x09, Qt::Key_Tab},
    {0x0C, 0x0C, Qt::Key_Clear},
    {0x0D, 0x0D, Qt::Key_Return},
    {0x10, 0x10, Qt::Key_Shift},
    {0x11, 0x11, Qt::Key_Control},
    {0x12, 0x12, Qt::Key_Alt},
    {0x13, 0x13, Qt::Key_Pause},
    {0x14, 0x14, Qt::Key_CapsLock},
    {0x15, 0x15, Qt::Key_Kana_Lock},
    {0x17, 0x17, Qt::Key_Hangul_Jeonja},
    {0x19, 0x19, Qt::Key_Kanji},
    {0x1B, 0x1B, Qt::Key_Escape},
    {0x1C, 0x1C, Qt::Key_Henkan},
    {0x1D, 0x1D, Qt::Key_Muhenkan},
    {0x1F, 0x1F, Qt::Key_Mode_switch},
    {0x20, 0x20, Qt::Key_Space},
    {0x21, 0x22, Qt::Key_PageUp}, // and PageDown
    {0x23, 0x23, Qt::Key_End},
    {0x24, 0x24, Qt::Key_Home},
    {0x25, 0x28, Qt::Key_Left}, // Up, Right, Down
    {0x29, 0x29, Qt::Key_Select},
    {0x2A, 0x2A, Qt::Key_Printer},
    {0x2B, 0x2B, Qt::Key_Execute},
    {0x2C, 0x2C, Qt::Key_Print},
    {0x2D, 0x2D, Qt::Key_Insert},
    {0x2E, 0x2E, Qt::Key_Delete},
    {0x2F, 0x2F, Qt::Key_Help},
    {0x30, 0x39, Qt::Key_0},
    {0x41, 0x5A, Qt::Key_A},
    {0x5B, 0x5C, Qt::Key_Meta, true}, // left and right Windows key
    {0x5D, 0x5D, Qt::Key_Menu},
    {0x5F, 0x5F, Qt::Key_Sleep},
    {0x60, 0x69, Qt::Key_0},        // keypad
    {0x6A, 0x6B, Qt::Key_Asterisk}, // and Plus
    {0x6C, 0x6F, Qt::Key_Comma},    // Minus, Period, Slash
    {0x70, 0x87, Qt::Key_F1},       // to F24
    {0x90, 0x90, Qt::Key_NumLock},
    {0x91, 0x91, Qt::Key_ScrollLock},
    {0x93, 0x93, Qt::Key_Massyo},
    {0x94, 0x94, Qt::Key_Touroku},
    {0xA0, 0xA1, Qt::Key_Shift, true},
    {0xA2, 0xA3, Qt::Key_Control, true},
    {0xA4, 0xA5, Qt::Key_Alt, true},
    {0xA6, 0xA6, Qt::Key_Back},
    {0xA7, 0xA7, Qt::Key_Forward},
    {0xA8, 0xA8, Qt::Key_Refresh},
    {0xA9, 0xA9, Qt::Key_Stop},
    {0xAA, 0xAA, Qt::Key_Search},
    {0xAB, 0xAB, Qt::Key_Favorites},
    {0xAC, 0xAC, Qt::Key_HomePage},
    {0xAD, 0xAD, Qt::Key_VolumeMute},
    {0xAE, 0xAE, Qt::Key_VolumeDown},
    {0xAF, 0xAF, Qt::Key_VolumeUp},
    {0xB0, 0xB0, Qt::Key_MediaNext},
    {0xB1, 0xB1, Qt::Key_MediaPrevious},
    {0xB2, 0xB2, Qt::Key_MediaStop},
    {0xB3, 0xB3, Qt::Key_MediaPlay},
    {0xB4, 0xB4, Qt::Key_LaunchMail},
    {0xB5, 0xB5, Qt::Key_LaunchMedia},
    {0xB6, 0xB7, Qt::Key_Launch0}, // and Launch1
    {0xBA, 0xBA, Qt::Key_Semicolon},
    {0xBB, 0xBB, Qt::Key_Equal},
    {0xBC, 0xBF, Qt::Key_Comma}, // Minus, Period, Slash
    {0xC0, 0xC0, Qt::Key_QuoteLeft},
    {0xDB, 0xDD, Qt::Key_BracketLeft}, // Backslash, BracketRight
    {0xDE, 0xDE, Qt::Key_Apostrophe},
    {0xE2, 0xE2, Qt::Key_Less},
    {0xFA, 0xFA, Qt::Key_Play},
    {0xFB, 0xFB, Qt::Key_Zoom},
    {0xFE, 0xFE, Qt::Key_Clear},
};

struct Modifier
{
    unsigned bit;
    Qt::KeyboardModifier modifier;
};

constexpr Modifier kModifiers[] = {
    {0x1, Qt::AltModifier},
    {0x2, Qt::ControlModifier},
    {0x4, Qt::ShiftModifier},
    {0x8, Qt::MetaModifier},
};

} // namespace

Qt::Key QHotkey::nativeKey2QT(unsigned nativeKey)
{
    const auto* const range =
        std::find_if(std::begin(kKeys), std::end(kKeys), [nativeKey](const KeyRange& candidate) {
            return nativeKey >= candidate.first && nativeKey <= candidate.last;
        });
    if (range == std::end(kKeys))
        return Qt::Key_unknown;
    const unsigned offset = range->same ? 0 : nativeKey - range->first;
    return static_cast<Qt::Key>(static_cast<unsigned>(range->key) + offset);
}

Qt::KeyboardModifiers QHotkey::nativeModifier2QT(unsigned nativeModifiers)
{
    Qt::KeyboardModifiers modifiers;
    for (const Modifier& candidate : kModifiers) {
        if (nativeModifiers & candidate.bit)
            modifiers |= candidate.modifier;
    }
    return modifiers;
}
