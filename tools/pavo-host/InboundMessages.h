#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// The messages that a workbench understands, each with an example.
namespace InboundMessages {

/// The arguments of the example, as JSON text; nothing if there is no such message.
std::optional<QString> exampleArguments(const QString& name);

/// All of them with their examples, a line each.
QString examples();

/// The names that start with `prefix`, in whatever case.
QStringList names(const QString& prefix);

} // namespace InboundMessages
