#include "tools/pavo-workbench/ElidingLabel.h"

#include "tools/pavo-workbench/Painting.h"

#include <QPainter>

ElidingLabel::ElidingLabel()
{
    setTextFormat(Qt::PlainText);
}

QSize ElidingLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

void ElidingLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    Painting::writeLine(painter, rect(), text(), font(), palette().color(foregroundRole()));
}
