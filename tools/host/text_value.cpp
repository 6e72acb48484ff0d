// Item IDs, numbers and option labels as people type them.
#include "tools/host/text_value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace kova_host {
namespace {

// The whole of `text` as a T; from_chars knows no locale, no blanks and no plus sign.
template <typename T, typename... Base>
std::optional<T> parse_whole(std::string_view text, Base... base) {
  T value{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base...);
  if (error != std::errc() || stop != end) {
    return std::nullopt;
  }
  return value;
}

bool is_hexadecimal(std::string_view text) {
  return text.starts_with("0x") || text.starts_with("0X");
}

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view trim(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace

std::optional<uint32_t> parse_item_id(std::string_view text) {
  if (is_hexadecimal(text)) {
    return parse_whole<uint32_t>(text.substr(2), 16);
  }
  return parse_whole<uint32_t>(text, 10);
}

std::optional<Number> parse_number(std::string_view text) {
  if (is_hexadecimal(text)) {
    const auto value = parse_whole<uint64_t>(text.substr(2), 16);
    if (!value || *value > static_cast<uint64_t>(INT64_MAX)) {
      return std::nullopt;
    }
    return Number(static_cast<int64_t>(*value));
  }
  if (const auto value = parse_whole<int64_t>(text, 10)) {
    return Number(*value);
  }
  const auto value = parse_whole<double>(text);
  if (!value || !std::isfinite(*value)) {
    return std::nullopt;
  }
  return Number(*value);
}

std::vector<Option> parse_options(std::string_view description) {
  std::vector<Option> options;
  while (!description.empty()) {
    const size_t bar = std::min(description.find('|'), description.size());
    const std::string_view part = trim(description.substr(0, bar));
    description.remove_prefix(std::min(bar + 1, description.size()));
    const size_t equals = part.find('=');
    if (equals == std::string_view::npos) {
      continue;
    }
    if (const auto value = parse_whole<int64_t>(trim(part.substr(0, equals)), 10)) {
      options.push_back({*value, std::string(trim(part.substr(equals + 1)))});
    }
  }
  return options;
}

bool same_word(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace kova_host
