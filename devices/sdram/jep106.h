// Manufacturer names of the JEDEC JEP106 standard by the ID word that SPD data carries.
#pragma once

#include <string_view>

namespace jep106 {

/// The name of an ID word, or "Unknown". Bits 15..8 are the manufacturer's code within its bank
/// (1..126), bits 7..0 the number of continuation codes (bank number minus one), each byte with
/// odd parity in its bit 7 as the SPD stores it. A wrong parity bit, or any bit above the word, is
/// no manufacturer's.
std::string_view manufacturer(unsigned int id_word);

}  // namespace jep106
