#include "tests/soak/Resources.h"

#include "tests/support/Memory.h"

#include <QDir>

#include <unistd.h>

#include <fstream>

namespace {

int entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size();
}

} // namespace

std::string ownResources()
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return std::to_string(resident * (::sysconf(_SC_PAGESIZE) / 1024)) + ' ' +
           std::to_string(heapBytesInUse() / 1024) + ' ' +
           std::to_string(entriesOf(QStringLiteral("/proc/self/fd"))) + ' ' +
           std::to_string(entriesOf(QStringLiteral("/proc/self/task")));
}
