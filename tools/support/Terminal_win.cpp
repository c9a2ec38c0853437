#include "tools/support/Terminal.h"

#include <windows.h>

#ifndef ENABLE_VIRTUAL_TERMINAL_PROCESSING
#define ENABLE_VIRTUAL_TERMINAL_PROCESSING 0x0004
#endif

/// How the console was.
struct Terminal::State
{
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    bool isConsole = GetConsoleMode(output, &mode) != 0;
    /// A console older than colour sequences refuses.
    bool showsColours =
        isConsole && SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
};

Terminal::Terminal()
    : m_state(std::make_unique<State>())
{
}

Terminal::~Terminal()
{
    if (m_state->isConsole)
        SetConsoleMode(m_state->output, m_state->mode);
}

bool Terminal::showsColours() const
{
    return m_state->showsColours;
}
