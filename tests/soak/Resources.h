#pragma once

#include <cstddef>
#include <string>

/// What this process occupies, as "RESIDENT_KIB HEAP_KIB HANDLES THREADS": what the system has
/// given it, what it has allocated and not freed, its handles or descriptors, its threads.
std::string ownResources();
