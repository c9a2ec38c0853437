#pragma once

#include <chrono>

/// Microseconds since a moment that is the same for every process of this machine.
inline long long nowUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
