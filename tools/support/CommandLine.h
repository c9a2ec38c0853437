#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>

/// A tool's command line, with --help and --version, which every tool has.
class CommandLine : public QCommandLineParser
{
public:
    static constexpr int kWrongUsage = 2;

    explicit CommandLine(const QString& description);

    /// Whether there is something to do. Otherwise a question has been answered or a mistake told,
    /// and that was it, with `exitCode`.
    bool read(const QStringList& arguments, int& exitCode);

private:
    const QCommandLineOption m_help;
    const QCommandLineOption m_version;
};
