// The families, one line each, and what is done with all of them alike.
#pragma once

#include <array>
#include <tuple>
#include <type_traits>

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "devices/poe/device_poe.h"
#include "devices/sbattery/device_sbattery.h"
#include "devices/sdram/device_sdram.h"
#include "framework/device_library.h"
#include "framework/row.h"

namespace families {

/// One family. Adapters are made in the order of `start`, because some read the device then, and
/// asked for their presence in the order of `probe`.
template <typename Device>
struct Family {
  using Adapter = Device;
  unsigned int start;
  unsigned int probe;
};

/// In the order of the capability document. A new family comes last in all three orders, so that
/// hosts find the others where they were.
inline constexpr std::tuple kAll{
    Family<Device_SDRAM>{.start = 5, .probe = 1},   Family<Device_SBATTERY>{.start = 6, .probe = 3},
    Family<Device_TRK7000>{.start = 2, .probe = 2}, Family<Device_PoE>{.start = 1, .probe = 4},
    Family<Device_PIC>{.start = 3, .probe = 5},     Family<Device_GSensor>{.start = 4, .probe = 6},
};

inline constexpr std::size_t kCount = std::tuple_size_v<decltype(kAll)>;

/// Calls `visit` with each family, in the order of the document.
template <typename Visit>
constexpr void visit_all(const Visit& visit) {
  std::apply([&](const auto&... family) { (visit(family), ...); }, kAll);
}

/// Asks the families in the order of the document until `take(family)` is true of one.
template <typename Take>
constexpr bool any_of(const Take& take) {
  return std::apply([&](const auto&... family) { return (take(family) || ...); }, kAll);
}

/// Calls `visit` with each family in the order of `rank(family)`: 1, 2, ...
template <typename Rank, typename Visit>
constexpr void visit_by(const Rank& rank, const Visit& visit) {
  for (unsigned int next = 1; next <= kCount; ++next) {
    visit_all([&](const auto& family) {
      if (rank(family) == next) {
        visit(family);
      }
    });
  }
}

template <typename Rank>
consteval bool is_an_order(const Rank& rank) {
  std::size_t places = 0;
  for (unsigned int place = 1; place <= kCount; ++place) {
    places += any_of([&](const auto& family) { return rank(family) == place; }) ? 1 : 0;
  }
  return places == kCount;
}

inline constexpr auto kStart = [](const auto& family) { return family.start; };
inline constexpr auto kProbe = [](const auto& family) { return family.probe; };
static_assert(is_an_order(kStart), "two families have one place in the order of starts");
static_assert(is_an_order(kProbe), "two families have one place in the order of probes");

/// Something of each family, as a tuple.
template <template <typename> typename Holder, typename List>
struct EachOf;
template <template <typename> typename Holder, typename... Device>
struct EachOf<Holder, const std::tuple<Family<Device>...>> {
  using Type = std::tuple<Holder<Device>...>;
};
template <template <typename> typename Holder>
using Each = typename EachOf<Holder, decltype(kAll)>::Type;

/// Gives the device library's entries, or null, to all families that have a use for them.
void hand_out(ReadEntry entry);
void hand_out(WriteEntry entry);

/// The families' sheets, in the order of the document.
std::array<const catalogue::Sheet*, kCount> sheets();

}  // namespace families
