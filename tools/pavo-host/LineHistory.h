#pragma once

#include <QByteArray>
#include <QString>

#include <histedit.h>

/// The lines of earlier runs and of this one.
class LineHistory
{
public:
    LineHistory();
    ~LineHistory();
    LineHistory(const LineHistory&) = delete;
    LineHistory& operator=(const LineHistory&) = delete;

    /// Has the editor's keys find them.
    void serve(EditLine* editor);
    /// Another host's lines since the start are lost.
    void add(const QString& line);

private:
    History* const m_history;
    HistEvent m_event{};
    QByteArray m_file;
};
