#pragma once

#include <QListWidget>

class ActivityDelegate;
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
    ActivityDelegate* m_delegate;
    QLabel* m_nothing; ///< that is there yet, it says
};
