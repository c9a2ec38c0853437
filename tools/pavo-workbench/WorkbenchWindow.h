#pragma once

#include <QWidget>

class AccountList;
class ActivityList;
class Avatar;
class QBoxLayout;
class QLabel;
class QPushButton;
class PresenceBar;
class Workbench;

/// The main window: the accounts at the left, what the host asked at the right. On the screen it is
/// as Accounts::mainWindow() says, and says there what the user makes of it.
class WorkbenchWindow : public QWidget
{
    Q_OBJECT

public:
    explicit WorkbenchWindow(Workbench& workbench);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeSide();
    QWidget* makeMain();
    QBoxLayout* makeHeader();
    QBoxLayout* makePresences();
    QBoxLayout* makeButtons();

    /// Brings the window on the screen as it is wanted, or takes it from there.
    void apply();
    void report(const QRect& rect);
    void refresh();

    Workbench& m_workbench;
    bool m_applying = false;
    AccountList* m_accounts = nullptr;
    QLabel* m_count = nullptr;
    Avatar* m_avatar = nullptr;
    QLabel* m_title = nullptr;
    QLabel* m_subtitle = nullptr;
    PresenceBar* m_presences = nullptr;
    QPushButton* m_forAll = nullptr;
    ActivityList* m_activity = nullptr;
    QPushButton* m_merge = nullptr;
};
