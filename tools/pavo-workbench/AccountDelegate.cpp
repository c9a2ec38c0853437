#include "tools/pavo-workbench/AccountDelegate.h"

#include "tools/pavo-workbench/AccountTexts.h"
#include "tools/pavo-workbench/Theme.h"

#include <QPainter>

namespace {

constexpr int kHeight = 64;
constexpr int kAvatar = 40;
constexpr int kMargin = 12;
constexpr int kBadge = 22;
constexpr int kPresenceDot = 13;
constexpr int kMarkDot = 10;
constexpr int kMostShown = 99;
constexpr QRgb kMarked = 0xffff4d4f;

/// By the presence's code; what is beyond is as the last one.
constexpr QRgb kPresenceColours[] = {0xff9aa4b2, 0xff35c76f, 0xfff0a020};

QColor presenceColour(int loginState)
{
    const int last = static_cast<int>(std::size(kPresenceColours)) - 1;
    return kPresenceColours[qBound(0, loginState, last)];
}

QFont sized(QFont font, int pixels, bool bold)
{
    font.setPixelSize(pixels);
    font.setBold(bold);
    return font;
}

void paintGround(QPainter& painter, const QStyleOptionViewItem& option, bool inFront)
{
    const bool isCurrent = (option.state & QStyle::State_HasFocus) != 0;
    const bool isHovered = (option.state & QStyle::State_MouseOver) != 0;
    if (inFront || isCurrent || isHovered) {
        painter.setBrush(QColor(255, 255, 255, inFront ? 56 : 26));
        painter.drawRoundedRect(option.rect.adjusted(6, 3, -6, -3), 8, 8);
    }
}

void paintAvatar(QPainter& painter, const QRect& place, const QModelIndex& index, const QFont& font)
{
    painter.setBrush(QColor(Theme::of(index.data(AccountDelegate::SkinRole).toInt()).accent));
    painter.setPen(QPen(Qt::white, 2));
    painter.drawEllipse(place);
    painter.setFont(sized(font, 18, true));
    painter.drawText(place, Qt::AlignCenter, index.data().toString().left(1).toUpper());
    painter.setBrush(presenceColour(index.data(AccountDelegate::LoginStateRole).toInt()));
    painter.drawEllipse(QRect(place.right() - kPresenceDot + 2, place.bottom() - kPresenceDot + 2,
                              kPresenceDot, kPresenceDot));
    painter.setPen(Qt::NoPen);
}

/// How wide the badge at the right is.
int paintBadge(QPainter& painter, const QRect& row, const QModelIndex& index, const QFont& font)
{
    const int unread = index.data(AccountDelegate::UnreadRole).toInt();
    const bool isMarked = index.data(AccountDelegate::MarkRole).toInt() != 0;
    if (unread <= 0 && !isMarked)
        return 0;
    painter.setBrush(isMarked ? QColor(kMarked) : QColor(255, 255, 255, 60));
    if (unread <= 0) {
        const int inset = (kBadge - kMarkDot) / 2;
        painter.drawEllipse(QRect(row.right() - kMargin - kMarkDot - inset,
                                  row.center().y() - kMarkDot / 2, kMarkDot, kMarkDot));
        return kBadge + 8;
    }
    const QString text =
        unread > kMostShown ? QStringLiteral("%1+").arg(kMostShown) : QString::number(unread);
    painter.setFont(sized(font, 12, true));
    const int width = qMax(kBadge, painter.fontMetrics().horizontalAdvance(text) + 12);
    const QRect place(row.right() - kMargin - width, row.center().y() - kBadge / 2, width, kBadge);
    painter.drawRoundedRect(place, kBadge / 2.0, kBadge / 2.0);
    painter.setPen(Qt::white);
    painter.drawText(place, Qt::AlignCenter, text);
    return width + 8;
}

} // namespace

void AccountDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const
{
    const bool inFront = index.data(FrontRole).toBool();
    const QRect& row = option.rect;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    paintGround(*painter, option, inFront);
    const QRect avatar(row.left() + kMargin + 2, row.center().y() - kAvatar / 2, kAvatar, kAvatar);
    paintAvatar(*painter, avatar, index, option.font);
    const int badge = paintBadge(*painter, row.adjusted(0, 0, -6, 0), index, option.font);

    QRect texts(avatar.right() + kMargin, row.top(), 0, row.height());
    texts.setRight(row.right() - kMargin - badge - 4);
    const auto write = [&](const QString& text, const QFont& font, const QColor& colour,
                           const QRect& place) {
        painter->setFont(font);
        painter->setPen(colour);
        painter->drawText(place, Qt::AlignVCenter | Qt::AlignLeft,
                          painter->fontMetrics().elidedText(text, Qt::ElideRight, place.width()));
    };
    const int middle = row.height() / 2;
    write(index.data().toString(), sized(option.font, 15, true), Qt::white,
          texts.adjusted(0, 9, 0, -middle));
    write(AccountTexts::presence(index.data(LoginStateRole).toInt()) +
              (inFront ? QStringLiteral(", in front") : QString()),
          sized(option.font, 12, false), QColor(255, 255, 255, 180),
          texts.adjusted(0, middle, 0, -9));
    painter->restore();
}

QSize AccountDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                                const QModelIndex& /*index*/) const
{
    return {0, kHeight};
}
