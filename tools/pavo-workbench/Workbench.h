#pragma once

#include "pavo_core/PAVOCore.h"
#include "pavo_core/QLoginObserver.h"
#include "tools/pavo-workbench/Accounts.h"

#include <QObject>
#include <QString>

#include <memory>
#include <string>
#include <vector>

class SimulatedLoginService;
struct KTChannelObserver;
struct KTKeyInfo;

/// A workbench but for what is on the screen: says what the host and the other accounts want of it,
/// a line each on standard output, acts on it, and ends when the host goes away.
class Workbench : public QObject
{
    Q_OBJECT

public:
    /// Of the process, besides 0 for an orderly end.
    enum ExitCode { WrongUsage = 2, NoChannel = 3, HostGoneTooEarly = 4, NoDisplay = 5 };

    explicit Workbench(std::shared_ptr<SimulatedLoginService> loginService);
    ~Workbench() override;
    Workbench(const Workbench&) = delete;
    Workbench& operator=(const Workbench&) = delete;

    /// False when the command line names no channel.
    static bool startUp(const QString& commandLine);
    /// As the host would log it in.
    void logIn(const std::string& pin, const std::string& token);
    void enterMainWindow(unsigned code);
    void setPresence(int presence);

    Accounts& accounts() { return m_accounts; }

Q_SIGNALS:
    /// In the user's language, but for what came from the host.
    void hostAsked(QString what, QString detail);

private:
    std::unique_ptr<KTChannelObserver> makeObserver();
    void takePresence(const std::string& pin, int presence);
    /// In English, as it is printed, and in the user's language, for the window.
    struct Detail
    {
        QString said;
        QString shown;
    };
    template<typename... Texts>
    static Detail detail(const char* english, const Texts&... texts);
    static Detail detail(const std::vector<KTKeyInfo>& keys);
    void asked(const char* said, const QString& shown, const Detail& detail = {});

    PAVOCore m_core;
    QLoginObserver m_loginObserver;
    Accounts m_accounts;
};
