#include "pavo_ui_base/QHotkey.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>

namespace {

std::map<unsigned, Qt::Key> keysOfWindows()
{
    std::map<unsigned, Qt::Key> keys = {
        {0x03, Qt::Key_Cancel},      {0x08, Qt::Key_Backspace},     {0x09, Qt::Key_Tab},
        {0x0C, Qt::Key_Clear},       {0x0D, Qt::Key_Return},        {0x10, Qt::Key_Shift},
        {0x11, Qt::Key_Control},     {0x12, Qt::Key_Alt},           {0x13, Qt::Key_Pause},
        {0x14, Qt::Key_CapsLock},    {0x15, Qt::Key_Kana_Lock},     {0x17, Qt::Key_Hangul_Jeonja},
        {0x19, Qt::Key_Kanji},       {0x1B, Qt::Key_Escape},        {0x1C, Qt::Key_Henkan},
        {0x1D, Qt::Key_Muhenkan},    {0x1F, Qt::Key_Mode_switch},   {0x20, Qt::Key_Space},
        {0x21, Qt::Key_PageUp},      {0x22, Qt::Key_PageDown},      {0x23, Qt::Key_End},
        {0x24, Qt::Key_Home},        {0x25, Qt::Key_Left},          {0x26, Qt::Key_Up},
        {0x27, Qt::Key_Right},       {0x28, Qt::Key_Down},          {0x29, Qt::Key_Select},
        {0x2A, Qt::Key_Printer},     {0x2B, Qt::Key_Execute},       {0x2C, Qt::Key_Print},
        {0x2D, Qt::Key_Insert},      {0x2E, Qt::Key_Delete},        {0x2F, Qt::Key_Help},
        {0x5B, Qt::Key_Meta},        {0x5C, Qt::Key_Meta},          {0x5D, Qt::Key_Menu},
        {0x5F, Qt::Key_Sleep},       {0x6A, Qt::Key_Asterisk},      {0x6B, Qt::Key_Plus},
        {0x6C, Qt::Key_Comma},       {0x6D, Qt::Key_Minus},         {0x6E, Qt::Key_Period},
        {0x6F, Qt::Key_Slash},       {0x90, Qt::Key_NumLock},       {0x91, Qt::Key_ScrollLock},
        {0x93, Qt::Key_Massyo},      {0x94, Qt::Key_Touroku},       {0xA0, Qt::Key_Shift},
        {0xA1, Qt::Key_Shift},       {0xA2, Qt::Key_Control},       {0xA3, Qt::Key_Control},
        {0xA4, Qt::Key_Alt},         {0xA5, Qt::Key_Alt},           {0xA6, Qt::Key_Back},
        {0xA7, Qt::Key_Forward},     {0xA8, Qt::Key_Refresh},       {0xA9, Qt::Key_Stop},
        {0xAA, Qt::Key_Search},      {0xAB, Qt::Key_Favorites},     {0xAC, Qt::Key_HomePage},
        {0xAD, Qt::Key_VolumeMute},  {0xAE, Qt::Key_VolumeDown},    {0xAF, Qt::Key_VolumeUp},
        {0xB0, Qt::Key_MediaNext},   {0xB1, Qt::Key_MediaPrevious}, {0xB2, Qt::Key_MediaStop},
        {0xB3, Qt::Key_MediaPlay},   {0xB4, Qt::Key_LaunchMail},    {0xB5, Qt::Key_LaunchMedia},
        {0xB6, Qt::Key_Launch0},     {0xB7, Qt::Key_Launch1},       {0xBA, Qt::Key_Semicolon},
        {0xBB, Qt::Key_Equal},       {0xBC, Qt::Key_Comma},         {0xBD, Qt::Key_Minus},
        {0xBE, Qt::Key_Period},      {0xBF, Qt::Key_Slash},         {0xC0, Qt::Key_QuoteLeft},
        {0xDB, Qt::Key_BracketLeft}, {0xDC, Qt::Key_Backslash},     {0xDD, Qt::Key_BracketRight},
        {0xDE, Qt::Key_Apostrophe},  {0xE2, Qt::Key_Less},          {0xFA, Qt::Key_Play},
        {0xFB, Qt::Key_Zoom},        {0xFE, Qt::Key_Clear},
    };
    for (unsigned digit = 0; digit <= 9; ++digit) {
        keys[0x30 + digit] = static_cast<Qt::Key>('0' + digit);
        keys[0x60 + digit] = static_cast<Qt::Key>('0' + digit);
    }
    for (unsigned letter = 'A'; letter <= 'Z'; ++letter)
        keys[letter] = static_cast<Qt::Key>(letter);
    for (unsigned function = 1; function <= 24; ++function)
        keys[0x6F + function] = static_cast<Qt::Key>(Qt::Key_F1 + static_cast<int>(function) - 1);
    return keys;
}

} // namespace

TEST(QHotkey, translatesEveryVirtualKey)
{
    const std::map<unsigned, Qt::Key> keys = keysOfWindows();
    for (unsigned code = 0; code <= 0x1FF; ++code) {
        const auto known = keys.find(code);
        const Qt::Key expected = known == keys.end() ? Qt::Key_unknown : known->second;
        EXPECT_EQ(QHotkey::nativeKey2QT(code), expected) << code;
    }
}

TEST(QHotkey, knowsNoKeyBeyondTheVirtualKeys)
{
    for (const unsigned code : {0x10041U, 0x80000041U, UINT_MAX})
        EXPECT_EQ(QHotkey::nativeKey2QT(code), Qt::Key_unknown) << code;
}

TEST(QHotkey, translatesEveryMask)
{
    for (unsigned mask = 0; mask < 16; ++mask) {
        Qt::KeyboardModifiers expected;
        expected.setFlag(Qt::AltModifier, mask & 1);
        expected.setFlag(Qt::ControlModifier, mask & 2);
        expected.setFlag(Qt::ShiftModifier, mask & 4);
        expected.setFlag(Qt::MetaModifier, mask & 8);
        EXPECT_EQ(QHotkey::nativeModifier2QT(mask), expected) << mask;
        constexpr unsigned kNoRepeat = 0x4000;
        EXPECT_EQ(QHotkey::nativeModifier2QT(mask | kNoRepeat), expected) << mask;
        EXPECT_EQ(QHotkey::nativeModifier2QT(mask | ~0xFU), expected) << mask;
    }
}
