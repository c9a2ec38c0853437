#include "tools/pavo-workbench/PresenceBar.h"

#include "tools/pavo-workbench/Presence.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

namespace {

constexpr int kPresences[] = {1, 2, 3};
constexpr int kDot = 10;
constexpr QSize kIcon(kDot + 4, kDot); ///< with a gap to the text

QIcon dot(int presence)
{
    // Sharp at the largest scale, too.
    constexpr int kSharpness = 4;
    QPixmap picture(kSharpness * kIcon);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(kSharpness, kSharpness);
    painter.setPen(QPen(Qt::white, 1));
    painter.setBrush(Presence::colour(presence));
    painter.drawEllipse(QRectF(0.5, 0.5, kDot - 1, kDot - 1));
    return picture;
}

} // namespace

PresenceBar::PresenceBar()
{
    // Not in a group: of one, Tab would reach nothing while none is chosen.
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    for (const int presence : kPresences) {
        auto* button = new QPushButton(dot(presence), Presence::name(presence));
        button->setIconSize(kIcon);
        button->setCheckable(true);
        connect(button, &QPushButton::clicked, this, [this, button, presence] {
            // It counts as chosen when the account has it.
            button->toggle();
            Q_EMIT chosen(presence);
        });
        m_buttons << button;
        layout->addWidget(button);
    }
    setFocusProxy(m_buttons.constFirst());
}

void PresenceBar::setPresence(int presence)
{
    auto button = m_buttons.begin();
    for (const int each : kPresences)
        (*button++)->setChecked(each == presence);
}
