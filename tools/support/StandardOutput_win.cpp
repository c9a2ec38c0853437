#include "tools/support/StandardOutput.h"

#include <QString>

#include <windows.h>

#include <algorithm>
#include <string>

namespace {

/// Whatever the console's code page is, which belongs to all its programs.
void writeConsole(HANDLE console, const std::wstring& text)
{
    // Older consoles refuse much more at once.
    constexpr std::size_t kUnits = 8192;
    for (std::size_t start = 0; start < text.size(); start += kUnits) {
        const auto count = static_cast<DWORD>(std::min(kUnits, text.size() - start));
        DWORD written = 0;
        WriteConsoleW(console, text.data() + start, count, &written, nullptr);
    }
}

} // namespace

void writeText(std::FILE* stream, const QByteArray& text)
{
    const HANDLE handle = GetStdHandle(stream == stderr ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(handle, &mode)) {
        std::fflush(stream);
        writeConsole(handle, QString::fromUtf8(text).toStdWString());
        return;
    }
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stream);
    std::fflush(stream);
}
