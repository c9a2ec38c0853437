#include "tools/support/StandardInput.h"
#include "tools/support/StandardInputRead.h"

#include <QString>

#include <windows.h>

#include <algorithm>

namespace {

/// Text typed at a console, which has other letters than its code page only when read as UTF-16.
int readConsole(HANDLE console, char* buffer, int size)
{
    constexpr DWORD kUnits = 1024;
    constexpr int kBytesOfUnit = 3;
    constexpr wchar_t kEndOfInput = 26;
    wchar_t units[kUnits];
    DWORD count = 0;
    const DWORD wanted = std::min(kUnits, static_cast<DWORD>(size / kBytesOfUnit));
    if (!ReadConsoleW(console, units, wanted, &count, nullptr) || count == 0 ||
        units[0] == kEndOfInput)
        return 0;
    const QByteArray text = QString::fromWCharArray(units, static_cast<int>(count)).toUtf8();
    std::copy(text.begin(), text.end(), buffer);
    return text.size();
}

} // namespace

bool StandardInput::isTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

int readStandardInput(char* buffer, int size)
{
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (StandardInput::isTerminal())
        return readConsole(input, buffer, size);
    DWORD count = 0;
    if (!ReadFile(input, buffer, static_cast<DWORD>(size), &count, nullptr))
        return 0;
    return static_cast<int>(count);
}
