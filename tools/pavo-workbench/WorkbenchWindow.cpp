#include "tools/pavo-workbench/WorkbenchWindow.h"

#include "tools/pavo-workbench/AccountDelegate.h"
#include "tools/pavo-workbench/AccountTexts.h"
#include "tools/pavo-workbench/Theme.h"
#include "tools/pavo-workbench/Workbench.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace {

constexpr int kSideWidth = 230;
constexpr int kTitleWidth = 260;
constexpr QSize kMinimumSize(720, 360);
constexpr int kControlHeight = 34;
constexpr int kLogLength = 500;
constexpr int kPresences[] = {1, 2, 3};

QLabel* makeLabel(const char* name, const QString& text = QString())
{
    auto* label = new QLabel(text);
    label->setObjectName(QLatin1String(name));
    return label;
}

} // namespace

WorkbenchWindow::WorkbenchWindow(Workbench& workbench)
    : m_workbench(workbench)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeSide());
    layout->addWidget(makeMain(), 1);
    // The window has to fit where another account's was, whatever its texts need.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    // A window that is hidden for another account's is no reason to end.
    QApplication::setQuitOnLastWindowClosed(false);

    Accounts& accounts = workbench.accounts();
    connect(&accounts, &Accounts::changed, this, &WorkbenchWindow::refresh);
    connect(&accounts, &Accounts::mainWindowWanted, this, &WorkbenchWindow::apply);
    connect(&workbench, &Workbench::hostAsked, this, [this](const QString& what) {
        m_log->addItem(what);
        if (m_log->count() > kLogLength)
            delete m_log->takeItem(0);
        m_log->scrollToBottom();
    });
    refresh();
}

QWidget* WorkbenchWindow::makeSide()
{
    m_accounts = new QListWidget;
    m_accounts->setObjectName(QStringLiteral("accounts"));
    m_accounts->setItemDelegate(new AccountDelegate(m_accounts));
    m_accounts->setMouseTracking(true);
    m_accounts->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(m_accounts, &QListWidget::itemClicked, this, &WorkbenchWindow::switchTo);
    // Not the item's activation, which a double click is besides its clicks.
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(key, m_accounts);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this] {
            if (QListWidgetItem* item = m_accounts->currentItem())
                switchTo(item);
        });
    }
    m_count = makeLabel("count");

    auto* side = new QWidget;
    side->setObjectName(QStringLiteral("side"));
    side->setAttribute(Qt::WA_StyledBackground);
    side->setFixedWidth(kSideWidth);
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->setSpacing(0);
    layout->addWidget(makeLabel("sideTitle", QStringLiteral("Accounts")));
    layout->addWidget(m_accounts, 1);
    layout->addWidget(m_count);
    return side;
}

QWidget* WorkbenchWindow::makeMain()
{
    m_title = makeLabel("title");
    m_subtitle = makeLabel("subtitle");
    m_subtitle->setWordWrap(true);
    m_presence = new QComboBox;
    m_presence->setMinimumHeight(kControlHeight);
    m_presence->setPalette(QPalette(Qt::white));
    for (const int presence : kPresences)
        m_presence->addItem(AccountTexts::presence(presence), presence);
    connect(m_presence, QOverload<int>::of(&QComboBox::activated), this,
            [this](int index) { m_workbench.setPresence(m_presence->itemData(index).toInt()); });
    m_log = new QListWidget;
    m_log->setObjectName(QStringLiteral("log"));
    m_log->setWordWrap(true);
    auto* heading = makeLabel("heading", QStringLiteral("What the host &asked"));
    heading->setBuddy(m_log);
    auto* presenceLabel = makeLabel("heading", QStringLiteral("&Presence"));
    presenceLabel->setBuddy(m_presence);

    auto* forAll = new QPushButton(QStringLiteral("&For all"));
    forAll->setObjectName(QStringLiteral("forAll"));
    forAll->setToolTip(QStringLiteral("Have the other accounts take on this presence, too"));
    Accounts& accounts = m_workbench.accounts();
    connect(forAll, &QPushButton::clicked, &accounts,
            [&accounts] { accounts.switchOthersLoginState(accounts.loginState()); });

    auto* titles = new QVBoxLayout;
    titles->setSpacing(2);
    titles->addWidget(m_title);
    titles->addWidget(m_subtitle);
    auto* header = new QHBoxLayout;
    header->addLayout(titles, 1);
    header->addWidget(presenceLabel);
    header->addWidget(m_presence);
    header->addWidget(forAll);

    auto* main = new QWidget;
    auto* layout = new QVBoxLayout(main);
    layout->setContentsMargins(24, 18, 24, 18);
    layout->setSpacing(12);
    layout->addLayout(header);
    layout->addSpacing(4);
    layout->addWidget(heading);
    layout->addWidget(m_log, 1);
    layout->addWidget(makeButtons());
    return main;
}

QWidget* WorkbenchWindow::makeButtons()
{
    Accounts& accounts = m_workbench.accounts();
    m_merge = new QPushButton;
    m_merge->setObjectName(QStringLiteral("merge"));
    connect(m_merge, &QPushButton::clicked, this,
            [&accounts] { accounts.setMerged(!accounts.selected().mergeWindow()); });
    auto* minimise = new QPushButton(QStringLiteral("Mi&nimise"));
    minimise->setObjectName(QStringLiteral("minimise"));
    connect(minimise, &QPushButton::clicked, &accounts, &Accounts::minimise);
    auto* hideButton = new QPushButton(QStringLiteral("&Hide"));
    hideButton->setObjectName(QStringLiteral("hide"));
    connect(hideButton, &QPushButton::clicked, &accounts, &Accounts::hide);

    auto* buttons = new QWidget;
    auto* layout = new QHBoxLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_merge);
    layout->addStretch(1);
    layout->addWidget(minimise);
    layout->addWidget(hideButton);
    return buttons;
}

void WorkbenchWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    QCoreApplication::quit();
}

void WorkbenchWindow::changeEvent(QEvent* event)
{
    // The window may not have the size yet that goes with the state.
    if (event->type() == QEvent::WindowStateChange)
        report(QRect());
    QWidget::changeEvent(event);
}

void WorkbenchWindow::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    report(geometry());
}

void WorkbenchWindow::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    report(geometry());
}

void WorkbenchWindow::apply()
{
    m_applying = true;
    const Accounts::MainWindow& wanted = m_workbench.accounts().mainWindow();
    if (!wanted.visible) {
        hide();
    } else {
        const Qt::WindowStates state = wanted.state == kMAMinimised   ? Qt::WindowMinimized
                                       : wanted.state == kMAMaximised ? Qt::WindowMaximized
                                                                      : Qt::WindowNoState;
        // What another account hands on may be smaller than a user can make it here.
        setMinimumSize(kMinimumSize.boundedTo(wanted.rect.size()));
        setGeometry(wanted.rect);
        setWindowState(state);
        show();
        if (state != Qt::WindowMinimized) {
            raise();
            activateWindow();
        }
    }
    m_applying = false;
}

void WorkbenchWindow::report(const QRect& rect)
{
    if (m_applying || !isVisible())
        return;
    const int state = isMinimized() ? kMAMinimised : isMaximized() ? kMAMaximised : kMANormal;
    m_workbench.accounts().mainWindowChanged(state, rect);
}

void WorkbenchWindow::refresh()
{
    const Accounts& accounts = m_workbench.accounts();
    const MASelectedAccount selected = accounts.selected();
    const QString sheet = Theme::of(accounts.skin()).styleSheet();
    if (styleSheet() != sheet)
        setStyleSheet(sheet);
    const QString pin = accounts.pin();
    setWindowTitle(pin.isEmpty() ? QStringLiteral("Workbench")
                                 : QStringLiteral("%1 - Workbench").arg(pin));
    m_title->setText(pin.isEmpty()
                         ? QStringLiteral("Nobody is logged in")
                         : m_title->fontMetrics().elidedText(pin, Qt::ElideRight, kTitleWidth));
    m_title->setToolTip(pin);
    m_subtitle->setText(
        QStringLiteral("%1 skin, %2")
            .arg(QLatin1String(Theme::of(accounts.skin()).name),
                 QLatin1String(selected.mergeWindow() ? "one window for all accounts"
                                                      : "a window of its own")));
    m_presence->setCurrentIndex(m_presence->findData(accounts.loginState()));
    m_presence->setEnabled(accounts.hasJoined());
    m_merge->setText(
        QLatin1String(selected.mergeWindow() ? "&Separate windows" : "&Merge windows"));
    m_merge->setEnabled(accounts.hasJoined());
    refreshList(selected);
}

void WorkbenchWindow::refreshList(const MASelectedAccount& selected)
{
    const Accounts& accounts = m_workbench.accounts();
    // The keyboard is where the front is, or stays where the user has taken it from there.
    const QListWidgetItem* const before = m_accounts->currentItem();
    const bool stays = before && !before->data(AccountDelegate::FrontRole).toBool();
    const QString current = stays ? before->text() : QString();
    m_accounts->clear();
    for (const MAAccountInfo& account : accounts.list()) {
        // Behind a window of its own an account is the only one, whatever was heard last.
        const bool isFront = selected.mergeWindow()
                                 ? account.equalAccount(selected.appID, selected.pin)
                                 : QString::fromStdString(account.pin) == accounts.pin();
        if (!isFront && !selected.mergeWindow())
            continue;
        auto* item = new QListWidgetItem(QString::fromStdString(account.pin), m_accounts);
        item->setToolTip(item->text());
        item->setData(AccountDelegate::SkinRole, account.skin);
        item->setData(AccountDelegate::LoginStateRole, account.loginState);
        item->setData(AccountDelegate::UnreadRole, account.unread);
        item->setData(AccountDelegate::MarkRole, account.unreadMark);
        item->setData(AccountDelegate::FrontRole, isFront);
        if (item->text() == current || (isFront && !m_accounts->currentItem()))
            m_accounts->setCurrentItem(item);
    }
    const int count = m_accounts->count();
    m_count->setText(count == 1 ? QStringLiteral("1 account")
                                : QStringLiteral("%1 accounts").arg(count));
}

void WorkbenchWindow::switchTo(QListWidgetItem* item)
{
    m_workbench.accounts().switchTo(item->text());
}
