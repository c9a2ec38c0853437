#pragma once

#include <QStyledItemDelegate>

/// Paints an account of the list: who it is, in the colour of its skin, its presence, and what is
/// unread.
class AccountDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// What an item has to hold besides its text, the pin.
    enum Role { SkinRole = Qt::UserRole, LoginStateRole, UnreadRole, MarkRole, FrontRole };

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;
};
