#pragma once

#include <QIcon>
#include <QWidget>

/// An account's initial in the colour of its skin.
class Avatar : public QWidget
{
    Q_OBJECT

public:
    explicit Avatar(int size);

    void setAccount(const QString& pin, int skin);

    static QIcon icon(const QString& pin, int skin);
    static void paint(QPainter& painter, const QRect& place, const QString& pin, int skin);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_pin;
    int m_skin = 0;
};
