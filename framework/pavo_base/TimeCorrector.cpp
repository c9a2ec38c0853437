#include "pavo_base/TimeCorrector.h"

#include <chrono>

unsigned long long TimeCorrector::tickCount()
{
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<unsigned long long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceStart).count());
}
