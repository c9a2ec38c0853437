#include "tests/support/Memory.h"

#include "platform/Win32.h"

#include <vector>

std::size_t heapBytesInUse()
{
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    std::size_t total = 0;
    for (HANDLE heap : heaps) {
        HeapLock(heap);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heap, &entry)) {
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)
                total += entry.cbData;
        }
        HeapUnlock(heap);
    }
    return total;
}
