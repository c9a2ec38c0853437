#pragma once

#include <QFont>

class QColor;
class QPainter;
class QRect;

/// How texts are shown that come from elsewhere, and so may hold line breaks and markup.
namespace Painting {

QFont sized(QFont font, int pixels, bool bold);

/// Writes one line into the middle of `place`, with dots at its end where there is no room for all
/// of it.
void writeLine(QPainter& painter, const QRect& place, const QString& text, const QFont& font,
               const QColor& colour, Qt::AlignmentFlag side = Qt::AlignLeft);

/// A tool tip with this text, of several lines where it is long.
QString toolTip(const QString& text);

} // namespace Painting
