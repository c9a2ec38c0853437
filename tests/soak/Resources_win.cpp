#include "tests/soak/Resources.h"

#include "platform/UniqueHandle.h"
#include "tests/support/Memory.h"

// Needs <windows.h>.
#include <psapi.h>
#include <tlhelp32.h>

#include <cstdint>

namespace {

int ownThreads()
{
    const pavo::UniqueHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot.get(), &entry); more;
         more = Thread32Next(snapshot.get(), &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    return count;
}

/// Counts one by one where the system has no number of its own to tell.
int ownHandles()
{
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count > 0)
        return static_cast<int>(count);
    constexpr std::uintptr_t kHighest = 0x1000;
    constexpr std::uintptr_t kStep = 4;
    int found = 0;
    for (std::uintptr_t value = kStep; value <= kHighest; value += kStep) {
        DWORD flags = 0;
        // NOLINTNEXTLINE(performance-no-int-to-ptr): handles are numbers.
        found += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return found;
}

} // namespace

std::string ownResources()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return std::to_string(counters.WorkingSetSize / 1024) + ' ' +
           std::to_string(heapBytesInUse() / 1024) + ' ' + std::to_string(ownHandles()) + ' ' +
           std::to_string(ownThreads());
}
