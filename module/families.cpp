// What all families are given and have.
#include "module/families.h"

namespace families {
namespace {

template <typename Known>
using AdapterOf = typename std::decay_t<Known>::Adapter;

}  // namespace

void hand_out(ReadEntry entry) {
  visit_all([&](const auto& family) { AdapterOf<decltype(family)>::get_func = entry; });
}

void hand_out(WriteEntry entry) {
  visit_all([&](const auto& family) {
    if constexpr (requires { AdapterOf<decltype(family)>::set_func; }) {
      AdapterOf<decltype(family)>::set_func = entry;
    }
  });
}

std::array<const catalogue::Sheet*, kCount> sheets() {
  std::array<const catalogue::Sheet*, kCount> all{};
  auto next = all.begin();
  visit_all([&](const auto& family) { *next++ = &AdapterOf<decltype(family)>::sheet(); });
  return all;
}

}  // namespace families
