#pragma once

#include <QColor>
#include <QString>

/// The colours of a skin.
struct Theme
{
    const char* name;
    QRgb accent; ///< what stands out: the side panel's choice, buttons
    QRgb dark;   ///< the side panel
    QRgb light;  ///< the ground of the rest

    /// Of the skin with this index; of the first one when there is none.
    static const Theme& of(int skin);

    [[nodiscard]] QString styleSheet() const;
};
