// The counted allocators: all replaceable forms of operator new and delete, and jansson's.
#include "tests/faults/allocation_faults.h"

#include <jansson.h>

#include <cstdlib>
#include <new>

namespace allocation_faults {
namespace {

constinit std::size_t live = 0;
constinit unsigned int blocks_until_refusal = 0;  // 0: none is refused
constinit bool lasting = false;
constinit bool refused = false;

bool refuse_now() {
  if (refused && lasting) {
    return true;
  }
  if (blocks_until_refusal == 0 || --blocks_until_refusal != 0) {
    return false;
  }
  refused = true;
  return true;
}

void* take(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
  if (refuse_now()) {
    return nullptr;
  }
  const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
  void* block = std::aligned_alloc(alignment, rounded != 0 ? rounded : alignment);
  live += block != nullptr ? 1 : 0;
  return block;
}

void* take_or_throw(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
  void* block = take(size, alignment);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void give_back(void* block) {
  live -= block != nullptr ? 1 : 0;
  std::free(block);
}

// Installed before main, and so before any JSON value exists.
const bool kJanssonCounted = [] {
  json_set_alloc_funcs([](std::size_t size) { return take(size); }, give_back);
  return true;
}();

}  // namespace

std::ostream& operator<<(std::ostream& out, Shortage shortage) {
  return out << (shortage == Shortage::kPassing ? "passing" : "lasting");
}

std::size_t live_blocks() {
  return live;
}

Scope::Scope(unsigned int n, Shortage shortage) {
  refused = false;
  lasting = shortage == Shortage::kLasting;
  blocks_until_refusal = n;
}

Scope::~Scope() {
  end();
}

bool Scope::end() {
  blocks_until_refusal = 0;
  lasting = false;
  return refused;
}

}  // namespace allocation_faults

using allocation_faults::give_back;
using allocation_faults::take;
using allocation_faults::take_or_throw;

// clang-format off
void* operator new(std::size_t size) { return take_or_throw(size); }
void* operator new[](std::size_t size) { return take_or_throw(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new(std::size_t size, std::align_val_t to) { return take_or_throw(size, std::size_t(to)); }
void* operator new[](std::size_t size, std::align_val_t to) { return take_or_throw(size, std::size_t(to)); }
void* operator new(std::size_t size, std::align_val_t to, const std::nothrow_t&) noexcept { return take(size, std::size_t(to)); }
void* operator new[](std::size_t size, std::align_val_t to, const std::nothrow_t&) noexcept { return take(size, std::size_t(to)); }
void operator delete(void* block) noexcept { give_back(block); }
void operator delete[](void* block) noexcept { give_back(block); }
void operator delete(void* block, std::size_t) noexcept { give_back(block); }
void operator delete[](void* block, std::size_t) noexcept { give_back(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { give_back(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { give_back(block); }
void operator delete(void* block, std::align_val_t) noexcept { give_back(block); }
void operator delete[](void* block, std::align_val_t) noexcept { give_back(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { give_back(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { give_back(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { give_back(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept { give_back(block); }
// clang-format on
