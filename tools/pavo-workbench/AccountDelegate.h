#pragma once

#include <QStyledItemDelegate>

struct Theme;

/// Paints an account of the list: who it is, in the colour of its skin, its presence, and what is
/// unread.
class AccountDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// What an item has to hold besides its text, the pin.
    enum Role {
        SkinRole = Qt::UserRole,
        LoginStateRole,
        StatusRole,
        UnreadRole,
        MarkRole,
        FrontRole
    };

    AccountDelegate(const Theme& theme, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;

private:
    void paintGround(QPainter& painter, const QStyleOptionViewItem& option, bool inFront) const;
    /// How wide the badge at the right is.
    int paintBadge(QPainter& painter, const QRect& row, const QModelIndex& index) const;

    const Theme& m_theme;
};
