#pragma once

#include "pavo_core/PAVOCore.h"

#include <QString>

#include <memory>
#include <string>

class SimulatedLoginService;
struct KTChannelObserver;

/// A workbench without a window: says what the host wants of it, a line each on standard output,
/// and ends when the host goes away.
class Workbench
{
public:
    /// Of the process, besides 0 for an orderly end.
    enum ExitCode { WrongUsage = 2, NoChannel = 3, HostGoneTooEarly = 4 };

    explicit Workbench(std::shared_ptr<SimulatedLoginService> loginService);
    Workbench(const Workbench&) = delete;
    Workbench& operator=(const Workbench&) = delete;

    /// False when the command line names no channel.
    static bool startUp(const QString& commandLine);
    static void enterMainWindow(unsigned code);

    /// Prints a line. Any thread.
    static void say(const QString& text);

private:
    static std::unique_ptr<KTChannelObserver> makeObserver();

    PAVOCore m_core;
};
