// What tests take from the families' rows: whose a device code is, and the codes of presence.
#pragma once

#include <cstdint>
#include <set>
#include <string>

/// The family, ID and name of the item that a code belongs to, for people: 'PIC item 0x14160801
/// "IGN status"'. What else is asked by that code, or "no item's code".
std::string owner_of(std::uint32_t code);

/// The codes that tell whether a family is there, and how many instances it has.
std::set<std::uint32_t> presence_codes();
