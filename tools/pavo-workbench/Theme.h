#pragma once

#include <QColor>
#include <QString>

/// The colours of a skin. Each text has a contrast of at least 4.5 to what it stands on.
struct Theme
{
    QRgb accent; ///< under white letters: the account's initial, what is chosen
    QRgb side;   ///< the side panel, under white letters
    QRgb ground; ///< of the rest
    QRgb card;   ///< what lies on the ground
    QRgb line;   ///< around cards
    QRgb text;   ///< on ground and card
    QRgb dim;    ///< text that matters less
    QRgb focus;  ///< around what has the keyboard

    /// Of the skin with this index; of the first one when there is none.
    static const Theme& of(int skin);
    /// Of a count of unread messages that are marked, under white letters.
    static constexpr QRgb kMarked = 0xffd42f3a;

    /// On the side panel: text that matters less, the row in front, a row under the mouse, and a
    /// count of unread messages that are not marked.
    [[nodiscard]] QColor sideDim() const;
    [[nodiscard]] QColor sideFront() const;
    [[nodiscard]] QColor sideHover() const;
    [[nodiscard]] QColor sideBadge() const;

    [[nodiscard]] QString styleSheet() const;
};
