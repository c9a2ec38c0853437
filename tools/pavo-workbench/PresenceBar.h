#pragma once

#include <QWidget>

class QPushButton;

/// The presences that an account can have, one of which is chosen.
class PresenceBar : public QWidget
{
    Q_OBJECT

public:
    PresenceBar();

    void setPresence(int presence);

Q_SIGNALS:
    void chosen(int presence);

private:
    QList<QPushButton*> m_buttons;
};
