#include "tools/pavo-host/EventText.h"

#include "tools/pavo-host/EventKinds.h"
#include "tools/support/Lines.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString coloured(const QString& text, const char* colour, bool colours)
{
    return colours ? QStringLiteral("\x1b[%1m%2\x1b[m").arg(QLatin1String(colour), text) : text;
}

} // namespace

QString eventText(const Event& event, double seconds, bool colours)
{
    if (event.kind == Event::Text)
        return event.text;
    const EventKind& kind = kEventKinds[event.kind];
    const QString text =
        printable(event.workbench.isEmpty() ? event.text
                                            : event.workbench + QStringLiteral(": ") + event.text);
    if (event.kind == Event::Heading)
        return QLatin1Char('\n') + coloured(QStringLiteral("== ") + text, kind.colour, colours) +
               QLatin1Char('\n');
    const QString column = QStringLiteral("%1").arg(QLatin1String(kind.column), -9);
    return QStringLiteral("%1  ").arg(seconds, 8, 'f', 3) + coloured(column, kind.colour, colours) +
           QStringLiteral("  ") + text + QLatin1Char('\n');
}

QString eventJson(const Event& event, double seconds)
{
    QJsonObject object{{QStringLiteral("time"), seconds},
                       {QStringLiteral("kind"), QLatin1String(kEventKinds[event.kind].name)},
                       {QStringLiteral("text"), event.text}};
    if (!event.workbench.isEmpty())
        object[QStringLiteral("workbench")] = event.workbench;
    if (!event.name.isEmpty())
        object[QStringLiteral("name")] = event.name;
    if (!event.arguments.isUndefined())
        object[QStringLiteral("arguments")] = event.arguments;
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) +
           QLatin1Char('\n');
}
