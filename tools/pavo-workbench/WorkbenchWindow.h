#pragma once

#include <QWidget>

class MASelectedAccount;
class QComboBox;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;
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
    QWidget* makeButtons();

    /// Brings the window on the screen as it is wanted, or takes it from there.
    void apply();
    void report(const QRect& rect);
    void refresh();
    void refreshList(const MASelectedAccount& selected);
    void switchTo(QListWidgetItem* item);

    Workbench& m_workbench;
    bool m_applying = false;
    QListWidget* m_accounts = nullptr;
    QLabel* m_count = nullptr;
    QLabel* m_title = nullptr;
    QLabel* m_subtitle = nullptr;
    QComboBox* m_presence = nullptr;
    QListWidget* m_log = nullptr;
    QPushButton* m_merge = nullptr;
};
