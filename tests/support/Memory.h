#pragma once

#include <cstddef>

/// The bytes that this process has allocated and not freed. Not what it occupies: an allocator may
/// keep what was freed.
std::size_t heapBytesInUse();

/// Whether that tells anything: the sanitizers have allocators of their own, which it knows nothing
/// of.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kHeapIsMeasurable = false;
#else
constexpr bool kHeapIsMeasurable = true;
#endif
