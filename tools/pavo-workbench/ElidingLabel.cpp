#include "tools/pavo-workbench/ElidingLabel.h"

#include <QPainter>

QSize ElidingLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

void ElidingLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text(), Qt::ElideRight, width()));
}
