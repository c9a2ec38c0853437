#include "tools/pavo-workbench/WorkbenchWindow.h"

#include "tools/pavo-workbench/AccountList.h"
#include "tools/pavo-workbench/ActivityList.h"
#include "tools/pavo-workbench/Avatar.h"
#include "tools/pavo-workbench/ElidingLabel.h"
#include "tools/pavo-workbench/Painting.h"
#include "tools/pavo-workbench/PresenceBar.h"
#include "tools/pavo-workbench/Skin.h"
#include "tools/pavo-workbench/Theme.h"
#include "tools/pavo-workbench/Workbench.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QVBoxLayout>

namespace {

constexpr int kSideWidth = 232;
constexpr QSize kMinimumSize(720, 400);
constexpr int kAvatar = 52;

template<typename Widget>
Widget* make(const char* name, const QString& text = QString())
{
    auto* widget = new Widget;
    widget->setObjectName(QLatin1String(name));
    widget->setText(text);
    return widget;
}

} // namespace

WorkbenchWindow::WorkbenchWindow(Workbench& workbench)
    : m_workbench(workbench)
{
    auto* contents = new QWidget;
    contents->setObjectName(QStringLiteral("contents"));
    contents->setMinimumSize(kMinimumSize);
    auto* sides = new QHBoxLayout(contents);
    sides->setContentsMargins(0, 0, 0, 0);
    sides->setSpacing(0);
    sides->addWidget(makeSide());
    sides->addWidget(makeMain(), 1);
    // The window has to fit where another account's was, whatever its contents need.
    auto* scrollArea = new QScrollArea;
    scrollArea->setFrameShape(QFrame::NoFrame);
    scrollArea->setFocusPolicy(Qt::NoFocus);
    scrollArea->setWidgetResizable(true);
    scrollArea->setWidget(contents);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scrollArea);
    // A window that is hidden for another account's is no reason to end.
    QApplication::setQuitOnLastWindowClosed(false);
    connect(new QShortcut(QKeySequence::Quit, this), &QShortcut::activated, this, &QWidget::close);

    Accounts& accounts = workbench.accounts();
    connect(&accounts, &Accounts::changed, this, &WorkbenchWindow::refresh);
    connect(&accounts, &Accounts::mainWindowWanted, this, &WorkbenchWindow::apply);
    connect(&workbench, &Workbench::hostAsked, m_activity, &ActivityList::add);
    refresh();
}

QWidget* WorkbenchWindow::makeSide()
{
    m_accounts = new AccountList;
    connect(m_accounts, &AccountList::chosen, &m_workbench.accounts(), &Accounts::switchTo);
    m_count = make<QLabel>("count");
    auto* title = make<QLabel>("sideTitle", tr("&Accounts"));
    title->setBuddy(m_accounts);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(12, 0, 12, 0);
    header->addWidget(title);
    header->addStretch(1);
    header->addWidget(m_count);

    auto* side = new QWidget;
    side->setObjectName(QStringLiteral("side"));
    side->setAttribute(Qt::WA_StyledBackground);
    side->setFixedWidth(kSideWidth);
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(8, 22, 8, 16);
    layout->setSpacing(12);
    layout->addLayout(header);
    layout->addWidget(m_accounts, 1);
    layout->addWidget(make<QLabel>("hint", tr("Ctrl+1 to Ctrl+9: switch")), 0, Qt::AlignHCenter);
    return side;
}

QWidget* WorkbenchWindow::makeMain()
{
    m_activity = new ActivityList;
    auto* heading = make<QLabel>("heading", tr("Activi&ty"));
    heading->setBuddy(m_activity);

    auto* main = new QWidget;
    auto* layout = new QVBoxLayout(main);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(12);
    layout->addLayout(makeHeader());
    layout->addSpacing(4);
    layout->addLayout(makePresences());
    layout->addWidget(heading);
    layout->addWidget(m_activity, 1);
    layout->addLayout(makeButtons());
    return main;
}

QBoxLayout* WorkbenchWindow::makeHeader()
{
    m_avatar = new Avatar(kAvatar);
    m_title = make<ElidingLabel>("title");
    m_subtitle = make<ElidingLabel>("subtitle");
    auto* titles = new QVBoxLayout;
    titles->setSpacing(0);
    titles->addWidget(m_title);
    titles->addWidget(m_subtitle);
    auto* header = new QHBoxLayout;
    header->setSpacing(16);
    header->addWidget(m_avatar);
    header->addLayout(titles, 1);
    return header;
}

QBoxLayout* WorkbenchWindow::makePresences()
{
    m_presences = new PresenceBar;
    connect(m_presences, &PresenceBar::chosen, &m_workbench, &Workbench::setPresence);
    auto* heading = make<QLabel>("heading", tr("&Presence"));
    heading->setBuddy(m_presences);
    m_forAll = make<QPushButton>("forAll", tr("&For all"));
    m_forAll->setToolTip(tr("Have the other accounts take on this presence, too"));
    Accounts& accounts = m_workbench.accounts();
    connect(m_forAll, &QPushButton::clicked, &accounts,
            [&accounts] { accounts.switchOthersLoginState(accounts.loginState()); });
    auto* presences = new QHBoxLayout;
    presences->addWidget(heading);
    presences->addSpacing(6);
    presences->addWidget(m_presences);
    presences->addStretch(1);
    presences->addWidget(m_forAll);
    return presences;
}

QBoxLayout* WorkbenchWindow::makeButtons()
{
    Accounts& accounts = m_workbench.accounts();
    m_merge = make<QPushButton>("merge");
    connect(m_merge, &QPushButton::clicked, this,
            [&accounts] { accounts.setMerged(!accounts.selected().mergeWindow()); });
    auto* minimise = make<QPushButton>("minimise", tr("Mi&nimise"));
    connect(minimise, &QPushButton::clicked, &accounts, &Accounts::minimise);
    auto* hideButton = make<QPushButton>("hide", tr("&Hide"));
    connect(hideButton, &QPushButton::clicked, &accounts, &Accounts::hide);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_merge);
    buttons->addStretch(1);
    buttons->addWidget(minimise);
    buttons->addWidget(hideButton);
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
    const bool isMerged = accounts.selected().mergeWindow();
    const Theme& theme = Theme::of(accounts.skin());
    const QString sheet = theme.styleSheet();
    if (styleSheet() != sheet) {
        setStyleSheet(sheet);
        m_accounts->setTheme(theme);
        m_activity->setTheme(theme);
    }
    const QString pin = accounts.hasJoined() ? accounts.pin() : QString();
    setWindowTitle(pin.isEmpty() ? tr("Workbench") : tr("%1 - Workbench").arg(pin));
    setWindowIcon(Avatar::icon(pin, accounts.skin()));
    m_avatar->setAccount(pin, accounts.skin());
    m_title->setText(pin.isEmpty() ? tr("Nobody is logged in") : pin);
    m_title->setToolTip(Painting::toolTip(pin));
    m_subtitle->setText(
        (isMerged ? tr("%1 skin, one window for all accounts") : tr("%1 skin, a window of its own"))
            .arg(Skin::name(accounts.skin())));
    m_presences->setPresence(accounts.loginState());
    m_presences->setEnabled(accounts.hasJoined());
    m_forAll->setEnabled(accounts.hasJoined());
    m_merge->setText(isMerged ? tr("&Separate windows") : tr("&Merge windows"));
    m_merge->setEnabled(accounts.hasJoined());
    m_accounts->refresh(accounts);
    m_count->setText(QString::number(m_accounts->count()));
}
