#include "tools/pavo-host/Filter.h"

#include "tools/pavo-host/EventKinds.h"

#include <QStringList>

#include <algorithm>

std::optional<Filter::Kinds> Filter::parseKinds(const QString& list, QString& problem)
{
    Kinds kinds;
    const QStringList names = list.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& name : names) {
        const auto* const end = kEventKinds + kFilteredKinds;
        const auto* const kind = std::find_if(kEventKinds, end, [&](const EventKind& k) {
            return name.trimmed() == QLatin1String(k.name);
        });
        if (kind == end) {
            QStringList known;
            std::for_each(kEventKinds, end, [&](const auto& k) { known << QLatin1String(k.name); });
            problem = QStringLiteral("not a kind of line to show: %1; there are %2")
                          .arg(name.trimmed(), known.join(QStringLiteral(", ")));
            return std::nullopt;
        }
        kinds.set(static_cast<std::size_t>(kind - kEventKinds));
    }
    return kinds.any() ? kinds.set(Event::Problem).set(Event::Text) : kinds.set();
}

void Filter::setNames(const QString& list)
{
    QStringList patterns;
    const QStringList names = list.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& name : names)
        patterns << QRegularExpression::escape(name.trimmed())
                        .replace(QStringLiteral("\\*"), QStringLiteral(".*"));
    m_names.reset();
    if (!patterns.isEmpty())
        m_names.emplace(QRegularExpression::anchoredPattern(patterns.join(QLatin1Char('|'))));
}

bool Filter::shows(const Event& event) const
{
    const bool isMessage = event.kind == Event::Sent || event.kind == Event::Received;
    return m_kinds.test(event.kind) &&
           (!isMessage || !m_names || m_names->match(event.name).hasMatch());
}
