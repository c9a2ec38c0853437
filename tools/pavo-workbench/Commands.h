#pragma once

#include <QString>

class Screen;
class Workbench;

/// The lines that the workbench takes from its standard input.
namespace Commands {

/// What they act on.
struct Target
{
    Workbench& workbench;
    Screen* screen; ///< Null when there is none.
};

/// Carries a line out; false, and what is wrong with it, when it cannot be understood.
bool run(const Target& target, const QString& line, QString& problem);

/// All of them, a line each.
QString help();

} // namespace Commands
