#include "tools/support/StandardOutput.h"

void writeText(std::FILE* stream, const QByteArray& text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stream);
    std::fflush(stream);
}
