// What can be told of a JSON text before it is parsed: where its long array is, and what its
// values will take. Any bytes will do.
#pragma once

#include <cstddef>
#include <string_view>

namespace kova_sim {

/// A part of a text; empty at npos if there is none.
struct TextRange {
  std::size_t begin = std::string_view::npos;
  std::size_t end = std::string_view::npos;

  bool exists() const { return begin != std::string_view::npos; }
};

/// What stands between the brackets of a recording's moments, which are the array "trace" or
/// "moments" in it. Up to the end of the text if nothing closes it.
TextRange find_moments(std::string_view text);

/// The end of the element that begins at `at`: its comma, the bracket that closes the array, or
/// the end of the text.
std::size_t end_of_element(std::string_view text, std::size_t at);

/// What the parsed values of a text take at most, as far as the text was looked at.
struct ValueCost {
  std::size_t bytes = 0;
  std::size_t looked_at = 0;  // less than all when `room` was passed there
};
ValueCost cost_of_values(std::string_view text, std::size_t room);

}  // namespace kova_sim
