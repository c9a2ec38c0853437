#pragma once

#include <QLabel>

/// One line of text, which ends in dots where there is no room for all of it.
class ElidingLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};
