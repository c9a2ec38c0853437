#include "bench/Usage.h"

#include <sys/resource.h>

#include <fstream>
#include <limits>
#include <string>

double processorTimeUs()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto us = [](const timeval& time) {
        return 1e6 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec);
    };
    return us(usage.ru_utime) + us(usage.ru_stime);
}

MemoryUse memoryUse()
{
    MemoryUse use{};
    std::ifstream listing("/proc/self/smaps_rollup");
    listing.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    std::string name;
    std::string unit;
    for (double kilobytes = 0; listing >> name >> kilobytes >> unit;) {
        if (name == "Rss:")
            use.resident = kilobytes;
        else if (name == "Anonymous:")
            use.own = kilobytes;
    }
    return use;
}
