#include "tools/support/StandardInput.h"
#include "tools/support/StandardInputRead.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

bool StandardInput::isTerminal()
{
    return isatty(STDIN_FILENO) == 1;
}

int readStandardInput(char* buffer, int size)
{
    ssize_t count = 0;
    do
        count = read(STDIN_FILENO, buffer, static_cast<std::size_t>(size));
    while (count < 0 && errno == EINTR);
    return static_cast<int>(std::max<ssize_t>(count, 0));
}
