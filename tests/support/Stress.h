#pragma once

#include <QtGlobal>

#include <algorithm>

/// `count`, or as many times more as PAVO_STRESS asks for: what is left to chance is tried as often
/// as there is time.
inline int stressed(int count)
{
    return count * std::max(1, qEnvironmentVariableIntValue("PAVO_STRESS"));
}
