#include "tools/pavo-workbench/Painting.h"

#include <QPainter>

QFont Painting::sized(QFont font, int pixels, bool bold)
{
    font.setPixelSize(pixels);
    font.setBold(bold);
    return font;
}

void Painting::writeLine(QPainter& painter, const QRect& place, const QString& text,
                         const QFont& font, const QColor& colour, Qt::AlignmentFlag side)
{
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(place, int(Qt::AlignVCenter) | side,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, place.width()));
}
