#pragma once

#include <QString>

/// Prints a line on standard output, as this program's. Any thread.
void say(const QString& text);
/// The same on standard error, of what is wrong.
void complain(const QString& problem);
