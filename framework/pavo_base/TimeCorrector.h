#pragma once

#include "pavo_base/Export.h"

class PAVO_BASE_EXPORT TimeCorrector
{
public:
    TimeCorrector() = delete;

    /// Milliseconds since a moment that is fixed while the system runs. Never goes back, whatever
    /// happens to the clock on the wall. Any thread may call.
    static unsigned long long tickCount();
};
