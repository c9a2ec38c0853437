#pragma once

#include <QListWidget>

class QLabel;
struct Theme;

/// What the host has asked for, the latest first.
class ActivityList : public QListWidget
{
    Q_OBJECT

public:
    ActivityList();

    void setTheme(const Theme& theme);
    void add(const QString& what, QString detail);

private:
    QLabel* m_nothing; ///< that is there yet, it says
};
