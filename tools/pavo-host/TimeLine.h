#pragma once

#include "tools/pavo-host/Event.h"
#include "tools/pavo-host/Filter.h"

#include <QElapsedTimer>
#include <QString>

#include <functional>

class Recording;

/// Prints what happens on both sides to standard output, with the seconds since the start.
class TimeLine
{
public:
    enum Format { Plain, Coloured, Json };

    explicit TimeLine(Format format = Plain)
        : m_format(format)
    {
        m_clock.start();
    }

    Filter& filter() { return m_filter; }
    /// Has everything written there, too, whatever is shown.
    void recordTo(Recording* recording) { m_recording = recording; }

    void add(const Event& event);
    /// Text of several lines, as it is.
    void print(const QString& text) { add({Event::Text, text}); }
    /// As complain(), between the lines; `place` is where the mistake is, or empty.
    void complain(const QString& place, const QString& problem);
    /// The line in which somebody types: `hide` is called before anything is printed, and `show`
    /// afterwards.
    void shareTerminal(std::function<void()> hide, std::function<void()> show);

private:
    void write(const std::function<void()>& write) const;

    const Format m_format;
    QElapsedTimer m_clock;
    Filter m_filter;
    Recording* m_recording = nullptr;
    std::function<void()> m_hide = [] {};
    std::function<void()> m_show = [] {};
};
