#pragma once

#include "tools/pavo-host/Step.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <optional>

/// What a script can say besides the messages to send.
namespace ScriptCommands {

bool has(const QString& name);

/// Those that start with `prefix`.
QStringList names(const QString& prefix);

/// The step of the command `name`, which there is, with what follows its name; or nothing and what
/// is wrong with that.
std::optional<Step> parse(const QString& name, const QString& rest, QString& problem);

/// Any JSON value, or nothing and what is wrong with it.
std::optional<QJsonValue> parseArguments(const QString& text, QString& problem);

/// The first word of `text`; what follows it is left in `rest`.
QString firstWord(const QString& text, QString& rest);

/// A line about each of them.
QString help();
/// Such a line, or several where a terminal's width is not enough.
QString helpLine(const QString& syntax, const char* purpose);

} // namespace ScriptCommands
