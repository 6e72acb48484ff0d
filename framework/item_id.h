// Layout of the 32-bit item IDs by which hosts address every value.
//
//   31..24 module code 0x14   23..16 device code (the family)   15..8 group
//    7..4  subgroup            3..0  index; index 0 names a heading
//
// PoE puts the port number (1..8) and memory modules their module number (1..255) in bits 7..0.
#pragma once

namespace item_id {

inline constexpr unsigned int kFamilyMask = 0xFFFF0000;
inline constexpr unsigned int kGroupMask = 0xFFFFFF00;

constexpr unsigned int family(unsigned int id) {
  return id & kFamilyMask;
}
constexpr unsigned int group(unsigned int id) {
  return id & kGroupMask;
}

/// How many IDs a heading leads, its own the first: a subgroup's, a group's or a family's.
constexpr unsigned int span(unsigned int heading) {
  return group(heading) != heading ? 0x10 : family(heading) != heading ? 0x100 : 0x10000;
}

/// Bits 7..0: a PoE port or a memory module's number.
constexpr unsigned int instance(unsigned int id) {
  return id & 0xFFU;
}

/// Bits 3..0: the item within its block.
constexpr unsigned int index(unsigned int id) {
  return id & 0x0FU;
}

}  // namespace item_id
