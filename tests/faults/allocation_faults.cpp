// The counted allocators: operator new and delete, and jansson's.
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

void* take(std::size_t size) {
  if (refuse_now()) {
    return nullptr;
  }
  void* block = std::malloc(size != 0 ? size : 1);
  live += block != nullptr ? 1 : 0;
  return block;
}

void give_back(void* block) {
  live -= block != nullptr ? 1 : 0;
  std::free(block);
}

// Installed before main, and so before any JSON value exists.
const bool kJanssonCounted = [] {
  json_set_alloc_funcs(take, give_back);
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

// The forms that the code uses; the array forms of the C++ library call these.
void* operator new(std::size_t size) {
  void* block = take(size);
  return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t& /*nothrow*/) noexcept {
  return take(size);
}
void operator delete(void* block) noexcept {
  give_back(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  give_back(block);
}
