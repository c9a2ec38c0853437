#include "tools/pavo-host/TimeLine.h"

#include "tools/pavo-host/EventText.h"
#include "tools/pavo-host/Recording.h"
#include "tools/support/Tool.h"

#include <QByteArray>

#include <cstdio>
#include <utility>

void TimeLine::add(const Event& event)
{
    const qint64 elapsedMs = m_clock.elapsed();
    if (m_recording)
        m_recording->add(event, elapsedMs);
    if (!m_filter.shows(event))
        return;
    const double seconds = static_cast<double>(elapsedMs) / 1000;
    const QByteArray bytes = (m_format == Json ? eventJson(event, seconds)
                                               : eventText(event, seconds, m_format == Coloured))
                                 .toUtf8();
    write([&] { ::print(bytes); });
}

void TimeLine::complain(const QString& place, const QString& problem)
{
    const QString text = place.isEmpty() ? problem : place + QStringLiteral(": ") + problem;
    write([&] { ::complain(text); });
    if (m_format == Json)
        add({Event::Problem, text});
}

void TimeLine::shareTerminal(std::function<void()> hide, std::function<void()> show)
{
    m_hide = std::move(hide);
    m_show = std::move(show);
}

void TimeLine::write(const std::function<void()>& write) const
{
    m_hide();
    // Before what goes to standard error.
    std::fflush(stdout);
    write();
    m_show();
}
