#include "tools/pavo-host/TerminalMode.h"

#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace {

/// Where the signal handler finds it.
termios g_mode;

void putBack()
{
    tcsetattr(STDIN_FILENO, TCSANOW, &g_mode);
}

void end(int signal)
{
    putBack();
    // The handler was for once: this is the system's own end.
    raise(signal);
}

} // namespace

TerminalMode::TerminalMode()
{
    tcgetattr(STDIN_FILENO, &g_mode);
    struct sigaction action = {};
    action.sa_handler = &end;
    action.sa_flags = SA_RESETHAND | SA_NODEFER;
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM})
        sigaction(signal, &action, nullptr);
}

TerminalMode::~TerminalMode()
{
    putBack();
}
