#pragma once

/// The terminal's mode at construction, put back at destruction and when a signal ends the process.
class TerminalMode
{
public:
    TerminalMode();
    ~TerminalMode();
    TerminalMode(const TerminalMode&) = delete;
    TerminalMode& operator=(const TerminalMode&) = delete;
};
