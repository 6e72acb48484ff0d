// Walks through a JSON text by its brackets and strings alone.
#include "simulator/json_outline.h"

#include <algorithm>

namespace kova_sim {
namespace {

// Behind the string whose opening quote is at `at`.
std::size_t end_of_string(std::string_view text, std::size_t at) {
  for (++at; at < text.size() && text[at] != '"'; ++at) {
    at += text[at] == '\\' ? 1 : 0;
  }
  return std::min(at + 1, text.size());
}

// Behind the string or the single character at `at`.
std::size_t end_of_step(std::string_view text, std::size_t at) {
  return text[at] == '"' ? end_of_string(text, at) : at + 1;
}

// What jansson allocates, rounded up to malloc's steps: an array and an object with the tables
// that they begin with and their first value, and what each further value adds.
std::size_t step_cost(std::string_view step) {
  constexpr std::size_t ARRAY = 176;
  constexpr std::size_t OBJECT = 280;
  constexpr std::size_t MEMBER_OR_ELEMENT = 48;
  constexpr std::size_t STRING_OR_KEY = 112;
  switch (step.front()) {
    case '[':
      return ARRAY;
    case '{':
      return OBJECT;
    case ',':
      return MEMBER_OR_ELEMENT;
    case '"':
      return STRING_OR_KEY + step.size();
    default:
      return 0;
  }
}

}  // namespace

std::size_t end_of_element(std::string_view text, std::size_t at) {
  std::size_t depth = 0;
  for (; at < text.size(); at = end_of_step(text, at)) {
    const char character = text[at];
    const bool closes = character == ']' || character == '}';
    if (depth == 0 && (closes || character == ',')) {
      break;
    }
    if (closes) {
      --depth;
    } else if (character == '[' || character == '{') {
      ++depth;
    }
  }
  return std::min(at, text.size());
}

TextRange find_moments(std::string_view text) {
  // The last string at the depth of the file's keys, and one below.
  std::string_view key;
  std::string_view inner_key;
  std::size_t depth = 0;
  for (std::size_t at = 0; at < text.size(); at = end_of_step(text, at)) {
    const char character = text[at];
    if (character == '"' && depth <= 2) {
      (depth == 1 ? key : inner_key) = text.substr(at, end_of_string(text, at) - at);
    } else if (character == '[' && key == "\"trace\"" &&
               (depth == 1 || (depth == 2 && inner_key == "\"moments\""))) {
      std::size_t end = at + 1;
      while ((end = end_of_element(text, end)) < text.size() && text[end] == ',') {
        ++end;
      }
      return {at + 1, end};
    } else if (character == '[' || character == '{') {
      inner_key = {};
      ++depth;
    } else if (depth > 0 && (character == ']' || character == '}')) {
      --depth;
    }
  }
  return {};
}

ValueCost cost_of_values(std::string_view text, std::size_t room) {
  ValueCost cost{.bytes = step_cost("[")};  // of a value that stands alone
  while (cost.looked_at < text.size() && cost.bytes <= room) {
    const std::size_t end = end_of_step(text, cost.looked_at);
    cost.bytes += step_cost(text.substr(cost.looked_at, end - cost.looked_at));
    cost.looked_at = end;
  }
  return cost;
}

}  // namespace kova_sim
