// Item IDs and numbers as people type them.
#include "tools/host/system/typed_number.h"

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

}  // namespace

std::optional<uint32_t> parse_item_id(std::string_view text) {
  if (is_hexadecimal(text)) {
    return parse_whole<uint32_t>(text.substr(2), 16);
  }
  return parse_whole<uint32_t>(text, 10);
}

std::optional<int64_t> parse_decimal(std::string_view text) {
  return parse_whole<int64_t>(text, 10);
}

std::optional<Number> parse_number(std::string_view text) {
  if (is_hexadecimal(text)) {
    const auto value = parse_whole<uint64_t>(text.substr(2), 16);
    if (!value || *value > static_cast<uint64_t>(INT64_MAX)) {
      return std::nullopt;
    }
    return Number(static_cast<int64_t>(*value));
  }
  if (const auto value = parse_decimal(text)) {
    return Number(*value);
  }
  const auto value = parse_whole<double>(text);
  if (!value || !std::isfinite(*value)) {
    return std::nullopt;
  }
  return Number(*value);
}

double as_double(const Number& number) {
  return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool same_word(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower(x) == lower(y); });
}

}  // namespace kova_host
