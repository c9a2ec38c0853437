#pragma once

#include <QCommandLineOption>

class QCommandLineParser;

/// --help and --version, which every tool has.
class Questions
{
public:
    explicit Questions(QCommandLineParser& parser);

    /// Whether one was asked; then it has been answered on standard output.
    bool areAnswered() const;

private:
    QCommandLineParser& m_parser;
    const QCommandLineOption m_help;
    const QCommandLineOption m_version;
};
