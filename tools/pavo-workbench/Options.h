#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <string>
#include <vector>

/// What the command line says.
struct Options
{
    struct Account
    {
        std::string pin;
        std::string token;
    };

    bool headless = false;
    bool waitEnter = false;
    QString application;
    std::vector<Account> accounts; ///< that can log in
    std::optional<Account> own;    ///< to be logged in at once

    /// Nothing, with the process's exit code, when the process has done what it was to do: there
    /// was a question or a mistake, and it is answered. The log is set up otherwise.
    static std::optional<Options> parse(const QStringList& arguments, int& exitCode);
};
