// Item IDs and numbers as people type them. Strict, and independent of the locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>

namespace kova_host {

using Number = std::variant<int64_t, double>;

// "0x14140B01" or "336857857"; nothing for a sign, a blank, trailing text or more than 32 bits.
std::optional<uint32_t> parse_item_id(std::string_view text);

// A decimal integer of at most 64 bits; nothing for anything else.
std::optional<int64_t> parse_decimal(std::string_view text);

// An integer (decimal, or hexadecimal after "0x") of at most 64 bits stays an integer; other
// decimal text ("0.25", "1e3") becomes a real. Nothing for an infinity, a NaN or trailing text.
std::optional<Number> parse_number(std::string_view text);

double as_double(const Number& number);

// `text` without blanks, tabs and line ends around it.
std::string_view trimmed(std::string_view text);

// Equal without regard to the case of ASCII letters.
bool same_word(std::string_view a, std::string_view b);

}  // namespace kova_host
