#pragma once

#include "pavo_base/Export.h"

class PAVO_BASE_EXPORT OSUtils
{
public:
    OSUtils() = delete;

    /// Lets the window message \a message reach this process from processes of lower integrity
    /// (\a action 1), or stops letting it (2). Any thread may call. \return false when the system
    /// refuses; always true on a system without such a filter.
    static bool changeWindowMessageFilter(unsigned int message, unsigned long action);
};
