#pragma once

#include "tools/support/Terminal.h"

#include <QByteArray>
#include <QString>

/// What a tool has in common with the others for those who run it. The first thing in main().
class Tool
{
public:
    explicit Tool(const char* name);

    static QString name();
    bool showsColours() const { return m_terminal.showsColours(); }
    /// What main() returns: `exitCode`, unless that is 0 and not all of the output was written.
    int end(int exitCode) const;

private:
    const Terminal m_terminal;
};

/// Writes on standard output at once. Ends the application when that is not possible, as nobody
/// reads on.
void print(const QByteArray& text);

/// Writes a line on standard error, behind the tool's name. Any thread.
void complain(const QString& problem);
