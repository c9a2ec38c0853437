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
    painter.drawText(
        place, int(Qt::AlignVCenter) | side,
        painter.fontMetrics().elidedText(text.simplified(), Qt::ElideRight, place.width()));
}

QString Painting::toolTip(const QString& text)
{
    // Markup only so that lines are wrapped; the text's own is none.
    return text.isEmpty() ? QString() : QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped());
}
