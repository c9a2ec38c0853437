#pragma once

#include <QListWidget>

class Accounts;
class MAAccountInfo;
struct Theme;

/// The accounts that one can go to, by a click, by Return, or by Ctrl and their number.
class AccountList : public QListWidget
{
    Q_OBJECT

public:
    AccountList();

    void setTheme(const Theme& theme);
    void refresh(const Accounts& accounts);

Q_SIGNALS:
    void chosen(QString pin);

private:
    void choose(const QListWidgetItem* item);
    /// `number` counts from 1.
    static void fill(QListWidgetItem& item, const MAAccountInfo& account, bool isFront, int number);
    void makeShortcuts();
};
