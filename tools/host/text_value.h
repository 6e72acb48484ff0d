// Item IDs, numbers and option labels as people type them. Strict, and independent of the locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kova_host {

// One choice of an enumerated item: the value the device knows and the word for people.
struct Option {
  int64_t value;
  std::string label;
};

using Number = std::variant<int64_t, double>;

// "0x14140B01" or "336857857"; nothing for a sign, a blank, trailing text or more than 32 bits.
std::optional<uint32_t> parse_item_id(std::string_view text);

// An integer (decimal, or hexadecimal after "0x") of at most 64 bits stays an integer; other
// decimal text ("0.25", "1e3") becomes a real. Nothing for an infinity, a NaN or trailing text.
std::optional<Number> parse_number(std::string_view text);

// The choices in an item's description such as "0=OFF|1=ON". Line feeds between choices are
// layout, and a part that is not "integer=label" is skipped.
std::vector<Option> parse_options(std::string_view description);

// Equal without regard to the case of ASCII letters.
bool same_word(std::string_view a, std::string_view b);

}  // namespace kova_host
