#include "tools/pavo-workbench/Say.h"

#include "tools/support/StandardOutput.h"

void say(const QString& text)
{
    writeText(stdout, QStringLiteral("workbench: %1\n").arg(text).toUtf8());
}
