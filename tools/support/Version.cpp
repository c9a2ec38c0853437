#include "tools/support/Version.h"

#include <QCoreApplication>
#include <pavo_ipc/PavoIpcVersion.h>

QString versionText()
{
    return QCoreApplication::applicationName() + QStringLiteral(" " PAVO_IPC_VERSION "\n");
}
