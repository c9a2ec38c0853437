#include "tools/pavo-host/LineHistory.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {

constexpr int kLines = 1000;

} // namespace

LineHistory::LineHistory()
    : m_history(history_init())
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(folder);
    m_file = QFile::encodeName(folder + QStringLiteral("/history"));
    history(m_history, &m_event, H_SETSIZE, kLines);
    history(m_history, &m_event, H_SETUNIQUE, 1);
    history(m_history, &m_event, H_LOAD, m_file.constData());
}

LineHistory::~LineHistory()
{
    history_end(m_history);
}

void LineHistory::serve(EditLine* editor)
{
    el_set(editor, EL_HIST, history, m_history);
}

void LineHistory::add(const QString& line)
{
    history(m_history, &m_event, H_ENTER, line.toUtf8().constData());
    history(m_history, &m_event, H_SAVE, m_file.constData());
}
