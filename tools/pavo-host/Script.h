#pragma once

#include "tools/pavo-host/Step.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

/// The lines that scripts and the prompt understand.
namespace Script {

/// The step of a line, or nothing and what is wrong with it.
std::optional<Step> parseLine(const QString& line, QString& problem);

/// Whether there is nothing to do in a line.
bool isBlank(const QString& line);

/// The steps of a whole file, or nothing and what is wrong with it.
std::optional<std::vector<Step>> read(const QString& fileName, QString& problem);

/// What ends the sessions with these names: the host goes away, and launched workbenches follow.
std::vector<Step> farewell(const QStringList& names);

/// Fails if a workbench has said more than was expected of it.
Step nothingElse();

/// What can be written, a line each.
QString help();

} // namespace Script
