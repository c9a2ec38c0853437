#pragma once

#include "tools/pavo-host/Traffic.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// How a script says what has happened.
namespace ScriptLines {

/// The host has written `bytes`.
QString sent(const QByteArray& bytes);

/// The workbench has said `message`.
QString received(const Traffic& message);

/// A workbench was launched.
QString launched(const QString& name, const QStringList& options);

} // namespace ScriptLines
