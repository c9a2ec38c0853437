#include "tools/support/StandardInput.h"
#include "tools/support/StandardInputRead.h"

#include <windows.h>

bool StandardInput::isTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

int readStandardInput(char* buffer, int size)
{
    DWORD count = 0;
    if (!ReadFile(GetStdHandle(STD_INPUT_HANDLE), buffer, static_cast<DWORD>(size), &count,
                  nullptr))
        return 0;
    return static_cast<int>(count);
}
