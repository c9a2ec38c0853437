#pragma once

#include <QString>

/// Prints a line on standard output, as this program's. Any thread.
void say(const QString& text);
