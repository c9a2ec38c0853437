#include "tools/pavo-workbench/Avatar.h"

#include "tools/pavo-workbench/Painting.h"
#include "tools/pavo-workbench/Theme.h"

#include <QPainter>
#include <QTextBoundaryFinder>

namespace {

constexpr int kIcon = 64;

/// A letter may be of several characters.
QString initial(const QString& pin)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, pin);
    return pin.left(qMax(0, finder.toNextBoundary())).toUpper();
}

} // namespace

Avatar::Avatar(int size)
{
    setFixedSize(size, size);
}

void Avatar::setAccount(const QString& pin, int skin)
{
    m_pin = pin;
    m_skin = skin;
    update();
}

QIcon Avatar::icon(const QString& pin, int skin)
{
    QPixmap picture(kIcon, kIcon);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(painter, picture.rect(), pin, skin);
    return picture;
}

void Avatar::paint(QPainter& painter, const QRect& place, const QString& pin, int skin)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(Theme::of(skin).accent));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(place);
    Painting::writeLine(painter, place, initial(pin),
                        Painting::sized(painter.font(), place.height() * 9 / 20, true), Qt::white,
                        Qt::AlignHCenter);
    painter.restore();
}

void Avatar::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    paint(painter, rect(), m_pin, m_skin);
}
