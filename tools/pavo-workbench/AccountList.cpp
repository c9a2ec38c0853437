#include "tools/pavo-workbench/AccountList.h"

#include "tools/pavo-workbench/AccountDelegate.h"
#include "tools/pavo-workbench/Accounts.h"
#include "tools/pavo-workbench/Painting.h"
#include "tools/pavo-workbench/Presence.h"

#include <QShortcut>

namespace {

constexpr int kNumberKeys = 9;

} // namespace

AccountList::AccountList()
{
    setObjectName(QStringLiteral("accounts"));
    setAccessibleName(tr("Accounts"));
    setMouseTracking(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(this, &QListWidget::itemClicked, this, &AccountList::choose);
    makeShortcuts();
}

void AccountList::makeShortcuts()
{
    // Not the item's activation, which a double click is besides its clicks.
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(key, this);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this] { choose(currentItem()); });
    }
    for (int number = 0; number < kNumberKeys; ++number) {
        auto* shortcut = new QShortcut(QKeySequence(int(Qt::CTRL) + Qt::Key_1 + number), this);
        connect(shortcut, &QShortcut::activated, this, [this, number] { choose(item(number)); });
    }
}

void AccountList::choose(const QListWidgetItem* item)
{
    if (item)
        Q_EMIT chosen(item->text());
}

void AccountList::setTheme(const Theme& theme)
{
    delete itemDelegate();
    setItemDelegate(new AccountDelegate(theme, this));
}

void AccountList::refresh(const Accounts& accounts)
{
    const MASelectedAccount selected = accounts.selected();
    // The keyboard is where the front is, or stays where the user has taken it from there.
    const QListWidgetItem* const before = currentItem();
    const bool stays = before && !before->data(AccountDelegate::FrontRole).toBool();
    const QString kept = stays ? before->text() : QString();
    QListWidgetItem* current = nullptr;
    // Rows stay, and with them where the list is scrolled to and what is said of the one under the
    // mouse.
    int row = 0;
    for (const MAAccountInfo& account : accounts.list()) {
        // Behind a window of its own an account is the only one, whatever was heard last.
        const bool isFront = selected.mergeWindow()
                                 ? account.equalAccount(selected.appID, selected.pin)
                                 : QString::fromStdString(account.pin) == accounts.pin();
        if (!isFront && !selected.mergeWindow())
            continue;
        auto* item = row < count() ? this->item(row) : new QListWidgetItem(this);
        fill(*item, account, isFront, ++row);
        if (item->text() == kept || (isFront && !current))
            current = item;
    }
    while (count() > row)
        delete takeItem(row);
    setCurrentItem(current);
}

void AccountList::fill(QListWidgetItem& item, const MAAccountInfo& account, bool isFront,
                       int number)
{
    const QString pin = QString::fromStdString(account.pin);
    const QString presence = Presence::name(account.loginState);
    const QString status = isFront ? tr("%1, in front").arg(presence) : presence;
    QStringList spoken{pin, status};
    if (account.unread > 0)
        spoken << tr("%1 unread").arg(account.unread);
    if (account.unreadMark != 0)
        spoken << tr("new messages");
    item.setText(pin);
    item.setToolTip(Painting::toolTip(
        number > kNumberKeys ? pin
                             : QStringLiteral("%1 (Ctrl+%2)").arg(pin, QString::number(number))));
    item.setData(Qt::AccessibleTextRole, spoken.join(QStringLiteral(", ")));
    item.setData(AccountDelegate::SkinRole, account.skin);
    item.setData(AccountDelegate::LoginStateRole, account.loginState);
    item.setData(AccountDelegate::StatusRole, status);
    item.setData(AccountDelegate::UnreadRole, account.unread);
    item.setData(AccountDelegate::MarkRole, account.unreadMark);
    item.setData(AccountDelegate::FrontRole, isFront);
}
