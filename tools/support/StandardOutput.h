#pragma once

#include <QByteArray>

#include <cstdio>

/// Writes UTF-8 to `stream`, standard output or standard error, in one go: lines of several threads
/// stay whole, and a console shows every letter.
void writeText(std::FILE* stream, const QByteArray& text);
