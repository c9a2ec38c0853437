#pragma once

#include <cstddef>

/// The bytes that this process has allocated and not freed. Not what it occupies: an allocator may
/// keep what was freed.
std::size_t heapBytesInUse();
