#pragma once

#include "tools/pavo-host/Filter.h"
#include "tools/pavo-host/Step.h"
#include "tools/pavo-host/TimeLine.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

enum ExitCode { Fine = 0, Failed = 1, WrongUsage = 2, NotStarted = 3 };

/// What the command line says.
struct Options
{
    enum class Source { Prompt, Script, Raw };

    Source source = Source::Prompt;
    std::vector<Step> steps; ///< Of a script.
    QString recording;       ///< A file; empty for none.
    QString pipeName;
    QString application; ///< The installation whose accounts are looked at.
    QStringList command; ///< What a workbench is launched with; may be empty.
    int timeoutMs = 0;
    TimeLine::Format format = TimeLine::Plain;
    Filter filter;

    /// Nothing, with the process's exit code, when there was a question or a mistake, and it is
    /// answered. `hasColours` tells whether standard output can show them.
    static std::optional<Options> parse(const QStringList& arguments, bool hasColours,
                                        int& exitCode);
};
