#include "tools/pavo-workbench/ActivityDelegate.h"

#include "tools/pavo-workbench/Painting.h"
#include "tools/pavo-workbench/Theme.h"

#include <QPainter>

namespace {

constexpr int kHeight = 50;
constexpr int kLine = 22;
constexpr int kStop = 10;
constexpr int kMargin = 14;

} // namespace

ActivityDelegate::ActivityDelegate(const Theme& theme, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_theme(theme)
{
}

void ActivityDelegate::paintStop(QPainter& painter, const QRect& row,
                                 const QModelIndex& index) const
{
    const int x = row.left() + kMargin + kStop / 2;
    const bool isLast = index.row() == index.model()->rowCount() - 1;
    painter.setPen(QPen(QColor(m_theme.line), 2));
    painter.drawLine(x, index.row() == 0 ? row.center().y() : row.top(), x,
                     isLast ? row.center().y() : row.bottom());
    painter.setPen(QPen(QColor(m_theme.card), 3));
    painter.setBrush(QColor(m_theme.focus));
    painter.drawEllipse(QPoint(x, row.center().y()), kStop / 2 + 1, kStop / 2 + 1);
}

void ActivityDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const
{
    const QRect& row = option.rect;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if ((option.state & QStyle::State_Selected) != 0) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(m_theme.ground));
        painter->drawRoundedRect(row, 6, 6);
    }
    paintStop(*painter, row, index);

    QRect place(row.left() + 2 * kMargin + kStop, 0, 0, kLine);
    place.setRight(row.right() - kMargin);
    const QString detail = index.data(DetailRole).toString();
    place.moveTop(row.center().y() - (detail.isEmpty() ? kLine / 2 : kLine - 1));
    const QString time = index.data(TimeRole).toString();
    Painting::writeLine(*painter, place, time, Painting::sized(option.font, 12, false), m_theme.dim,
                        Qt::AlignRight);
    QRect title = place;
    title.setRight(title.right() - painter->fontMetrics().horizontalAdvance(time) - kMargin);
    Painting::writeLine(*painter, title, index.data().toString(),
                        Painting::sized(option.font, 14, true), m_theme.text);
    Painting::writeLine(*painter, place.translated(0, kLine - 2), detail,
                        Painting::sized(option.font, 13, false), m_theme.dim);
    painter->restore();
}

QSize ActivityDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                                 const QModelIndex& /*index*/) const
{
    return {0, kHeight};
}
