// Heap allocations of this process, by operator new and by jansson.
#pragma once

#include <cstdint>

/// Allocations so far.
std::uint64_t allocation_count();
