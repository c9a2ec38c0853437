#pragma once

#include "tools/pavo-host/Event.h"

#include <QFile>

/// A conversation as a script: what the host did and when, and what each workbench has to say.
class Recording
{
public:
    /// Replaces the file, which only its owner may read since a login's token is recorded, too.
    /// False, with the reason in `problem`, when it cannot be written.
    bool open(const QString& fileName, QString& problem);

    void add(const Event& event, qint64 elapsedMs);
    /// Whether not all of it could be written.
    bool hasFailed() const { return m_file.error() != QFile::NoError; }

private:
    void write(const QString& line);

    QFile m_file;
    QString m_workbench; ///< that the last line is about
    qint64 m_lastMs = 0;
};
