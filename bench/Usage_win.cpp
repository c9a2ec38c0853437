#include "bench/Usage.h"

#include "platform/Win32.h"

// Needs <windows.h>.
#include <psapi.h>

double processorTimeUs()
{
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto us = [](const FILETIME& time) {
        return (4294967296.0 * time.dwHighDateTime + time.dwLowDateTime) / 10;
    };
    return us(kernel) + us(user);
}

MemoryUse memoryUse()
{
    PROCESS_MEMORY_COUNTERS_EX counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                         sizeof counters);
    constexpr double kBytesPerKb = 1024;
    return {static_cast<double>(counters.WorkingSetSize) / kBytesPerKb,
            static_cast<double>(counters.PrivateUsage) / kBytesPerKb};
}
