#include "tools/pavo-workbench/Say.h"

#include <QByteArray>

#include <cstdio>

namespace {

// In one go, so that lines of several threads stay whole.
void print(const QString& line, std::FILE* stream)
{
    const QByteArray bytes = line.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

void say(const QString& text)
{
    print(QStringLiteral("workbench: %1\n").arg(text), stdout);
}

void complain(const QString& problem)
{
    print(QStringLiteral("pavo-workbench: %1\n").arg(problem), stderr);
}
