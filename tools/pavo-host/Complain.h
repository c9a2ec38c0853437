#pragma once

#include <QString>

#include <cstdio>

/// One line on standard error; `place` is where the mistake is, or empty.
inline void complain(const QString& place, const QString& problem)
{
    const QString where = place.isEmpty() ? place : place + QStringLiteral(": ");
    std::fprintf(stderr, "pavo-host: %s%s\n", where.toUtf8().constData(),
                 problem.toUtf8().constData());
    std::fflush(stderr);
}
