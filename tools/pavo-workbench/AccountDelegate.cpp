#include "tools/pavo-workbench/AccountDelegate.h"

#include "tools/pavo-workbench/Avatar.h"
#include "tools/pavo-workbench/Painting.h"
#include "tools/pavo-workbench/Presence.h"
#include "tools/pavo-workbench/Theme.h"

#include <QPainter>

namespace {

constexpr int kHeight = 66;
constexpr int kAvatar = 42;
constexpr int kMargin = 12;
constexpr int kBadge = 22;
constexpr int kPresenceDot = 14;
constexpr int kMarkDot = 10;
constexpr int kMostShown = 99;

} // namespace

AccountDelegate::AccountDelegate(const Theme& theme, QObject* parent)
    : QStyledItemDelegate(parent)
    , m_theme(theme)
{
}

void AccountDelegate::paintGround(QPainter& painter, const QStyleOptionViewItem& option,
                                  bool inFront) const
{
    const bool hasKeyboard = (option.state & QStyle::State_HasFocus) != 0;
    const bool isHovered = (option.state & QStyle::State_MouseOver) != 0;
    if (!inFront && !hasKeyboard && !isHovered)
        return;
    painter.setBrush(inFront ? m_theme.sideFront() : m_theme.sideHover());
    painter.setPen(hasKeyboard ? QPen(m_theme.sideDim(), 2) : QPen(Qt::NoPen));
    painter.drawRoundedRect(option.rect.adjusted(3, 3, -3, -3), 10, 10);
    painter.setPen(Qt::NoPen);
}

int AccountDelegate::paintBadge(QPainter& painter, const QRect& row, const QModelIndex& index) const
{
    const int unread = index.data(UnreadRole).toInt();
    const bool isMarked = index.data(MarkRole).toInt() != 0;
    if (unread <= 0 && !isMarked)
        return 0;
    painter.setBrush(isMarked ? QColor(Theme::kMarked) : m_theme.sideBadge());
    if (unread <= 0) {
        const int inset = (kBadge - kMarkDot) / 2;
        painter.drawEllipse(QRect(row.right() - kMargin - kMarkDot - inset,
                                  row.center().y() - kMarkDot / 2, kMarkDot, kMarkDot));
        return kBadge + 8;
    }
    const QString text =
        unread > kMostShown ? QStringLiteral("%1+").arg(kMostShown) : QString::number(unread);
    painter.setFont(Painting::sized(painter.font(), 12, true));
    const int width = qMax(kBadge, painter.fontMetrics().horizontalAdvance(text) + 12);
    const QRect place(row.right() - kMargin - width, row.center().y() - kBadge / 2, width, kBadge);
    painter.drawRoundedRect(place, kBadge / 2.0, kBadge / 2.0);
    painter.setPen(Qt::white);
    painter.drawText(place, Qt::AlignCenter, text);
    return width + 8;
}

void AccountDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const
{
    const bool inFront = index.data(FrontRole).toBool();
    const QRect& row = option.rect;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setFont(option.font);
    paintGround(*painter, option, inFront);

    const QRect avatar(row.left() + kMargin, row.center().y() - kAvatar / 2, kAvatar, kAvatar);
    Avatar::paint(*painter, avatar, index.data().toString(), index.data(SkinRole).toInt());
    painter->setBrush(Presence::colour(index.data(LoginStateRole).toInt()));
    painter->setPen(QPen(inFront ? m_theme.sideFront() : QColor(m_theme.side), 2));
    painter->drawEllipse(QRect(avatar.right() - kPresenceDot + 3,
                               avatar.bottom() - kPresenceDot + 3, kPresenceDot, kPresenceDot));
    painter->setPen(Qt::NoPen);
    const int badge = paintBadge(*painter, row, index);

    QRect texts(avatar.right() + kMargin, row.top(), 0, row.height());
    texts.setRight(row.right() - kMargin - badge);
    const int middle = row.height() / 2;
    Painting::writeLine(*painter, texts.adjusted(0, 9, 0, -middle), index.data().toString(),
                        Painting::sized(option.font, 15, true), Qt::white);
    Painting::writeLine(*painter, texts.adjusted(0, middle, 0, -9),
                        index.data(StatusRole).toString(), Painting::sized(option.font, 12, false),
                        m_theme.sideDim());
    painter->restore();
}

QSize AccountDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                                const QModelIndex& /*index*/) const
{
    return {0, kHeight};
}
