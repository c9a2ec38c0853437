#pragma once

#include <QStyledItemDelegate>

struct Theme;

/// Paints an activity as a stop of a time line: what, when, and with which particulars.
class ActivityDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// What an item has to hold besides its text, what was done. The detail may be empty.
    enum Role { DetailRole = Qt::UserRole, TimeRole };

    ActivityDelegate(const Theme& theme, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;

private:
    void paintStop(QPainter& painter, const QRect& row, const QModelIndex& index) const;

    const Theme& m_theme;
};
