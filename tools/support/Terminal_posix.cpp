#include "tools/support/Terminal.h"

#include <QByteArray>

#include <unistd.h>

/// Nothing has to be put back.
struct Terminal::State
{
};

Terminal::Terminal() = default;
Terminal::~Terminal() = default;

bool Terminal::showsColours() const
{
    const QByteArray type = qgetenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && !type.isEmpty() && type != "dumb";
}
