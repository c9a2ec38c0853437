#pragma once

#include <QString>

/// The lines that the workbench takes from its standard input.
namespace Commands {

/// Carries a line out; false, and what is wrong with it, when it cannot be understood.
bool run(const QString& line, QString& problem);

/// All of them, a line each.
QString help();

} // namespace Commands
