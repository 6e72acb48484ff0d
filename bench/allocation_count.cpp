// Counting stand-ins for operator new and for jansson's allocator.
#include "bench/allocation_count.h"

#include <jansson.h>

#include <cstdlib>
#include <new>

namespace {

std::uint64_t allocations = 0;

void* counted_malloc(std::size_t size) {
  ++allocations;
  return std::malloc(size);
}

[[maybe_unused]] const bool jansson_is_counted =
    (json_set_alloc_funcs(counted_malloc, std::free), true);

}  // namespace

std::uint64_t allocation_count() {
  return allocations;
}

void* operator new(std::size_t size) {
  if (void* memory = counted_malloc(size)) {
    return memory;
  }
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
