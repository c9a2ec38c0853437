#include "tests/support/Memory.h"

#include <malloc.h>

std::size_t heapBytesInUse()
{
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}
