#include "tools/pavo-workbench/ActivityList.h"

#include "tools/pavo-workbench/ActivityDelegate.h"
#include "tools/pavo-workbench/Painting.h"

#include <QLabel>
#include <QTime>
#include <QVBoxLayout>

namespace {

constexpr int kLength = 500;
constexpr int kDetailLength = 1000; ///< more than there is room for

} // namespace

ActivityList::ActivityList()
    : m_nothing(new QLabel(tr("The host has not asked for anything yet.")))
{
    setObjectName(QStringLiteral("activity"));
    setAccessibleName(tr("Activity"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    m_nothing->setObjectName(QStringLiteral("nothing"));
    m_nothing->setAlignment(Qt::AlignCenter);
    m_nothing->setWordWrap(true);
    (new QVBoxLayout(viewport()))->addWidget(m_nothing);
}

void ActivityList::setTheme(const Theme& theme)
{
    delete itemDelegate();
    setItemDelegate(new ActivityDelegate(theme, this));
}

void ActivityList::add(const QString& what, QString detail)
{
    if (detail.size() > kDetailLength)
        detail.replace(kDetailLength, detail.size(), QStringLiteral("..."));
    m_nothing->hide();
    auto* item = new QListWidgetItem(what);
    item->setData(ActivityDelegate::DetailRole, detail);
    const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    item->setData(ActivityDelegate::TimeRole, time);
    QStringList spoken{what, detail, time};
    spoken.removeAll(QString());
    item->setData(Qt::AccessibleTextRole, spoken.join(QStringLiteral(", ")));
    item->setToolTip(Painting::toolTip(detail));
    insertItem(0, item);
    delete takeItem(kLength);
    scrollToTop();
}
