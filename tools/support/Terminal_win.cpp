#include "tools/support/Terminal.h"

#include <windows.h>

#include <cstddef>
#include <cstdio>

#ifndef ENABLE_VIRTUAL_TERMINAL_PROCESSING
#define ENABLE_VIRTUAL_TERMINAL_PROCESSING 0x0004
#endif

/// How the console was.
struct Terminal::State
{
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    UINT codePage = GetConsoleOutputCP();
    DWORD mode = 0;
    bool isConsole = GetConsoleMode(output, &mode) != 0;
    /// A console older than colour sequences refuses.
    bool showsColours =
        isConsole && SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
};

Terminal::Terminal()
    : m_state(std::make_unique<State>())
{
    if (!m_state->isConsole)
        return;
    SetConsoleOutputCP(CP_UTF8);
    // Byte by byte, as the C library writes to a console otherwise, no letter would be whole.
    constexpr std::size_t kBufferSize = 65536;
    std::setvbuf(stdout, nullptr, _IOFBF, kBufferSize);
}

Terminal::~Terminal()
{
    if (!m_state->isConsole)
        return;
    SetConsoleMode(m_state->output, m_state->mode);
    SetConsoleOutputCP(m_state->codePage);
}

bool Terminal::showsColours() const
{
    return m_state->showsColours;
}
