#pragma once

#include <QLabel>

/// One line of plain text, which ends in dots where there is no room for all of it.
class ElidingLabel : public QLabel
{
    Q_OBJECT

public:
    ElidingLabel();

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};
