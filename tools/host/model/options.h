// The choices of an item whose values have names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kova_host {

// One choice: the value the device knows and the word for people.
struct Option {
  int64_t value;
  std::string label;
};

// The choices in an item's description such as "0=OFF|1=ON". Line feeds between choices are
// layout, and a part that is not "integer=label" is skipped.
std::vector<Option> parse_options(std::string_view description);

}  // namespace kova_host
