#include "tests/support/SegmentBlocker.h"

#include <QByteArray>

// The file that a segment's number is derived from lies in the folder for temporary files: there is
// no such folder.
struct SegmentBlocker::Data
{
    QByteArray temporaryFolder;
};

SegmentBlocker::SegmentBlocker(const QString& /*key*/)
    : m_data(std::make_unique<Data>())
{
    m_data->temporaryFolder = qgetenv("TMPDIR");
    qputenv("TMPDIR", "/dev/null");
}

SegmentBlocker::~SegmentBlocker()
{
    if (m_data->temporaryFolder.isEmpty())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", m_data->temporaryFolder);
}
