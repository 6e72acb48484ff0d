// Readings as numbers.
#include "tools/host/values/number_of.h"

#include <charconv>
#include <string_view>
#include <variant>

#include "tools/host/system/typed_number.h"

namespace kova_host {
namespace {

// "2 h 5 m" in minutes.
std::optional<double> minutes_of(std::string_view text) {
  unsigned hours = 0;
  unsigned minutes = 0;
  const char* const end = text.data() + text.size();
  const auto [after_hours, error] = std::from_chars(text.data(), end, hours);
  constexpr std::string_view kBetween = " h ";
  std::string_view rest(after_hours, static_cast<size_t>(end - after_hours));
  if (error != std::errc() || !rest.starts_with(kBetween)) {
    return std::nullopt;
  }
  rest.remove_prefix(kBetween.size());
  const auto [stop, second] = std::from_chars(rest.data(), end, minutes);
  return second == std::errc() && std::string_view(stop, static_cast<size_t>(end - stop)) == " m"
             ? std::optional(60.0 * hours + minutes)
             : std::nullopt;
}

}  // namespace

std::optional<double> published_value(const Item& item, const Reading& reading) {
  const auto* text = std::get_if<std::string>(&reading.value);
  if (text == nullptr || item.unit.empty()) {
    return reading.number();
  }
  const auto number = number_in(reading);
  return number ? number : minutes_of(*text);
}

std::optional<double> number_in(const Reading& reading) {
  if (const auto* text = std::get_if<std::string>(&reading.value)) {
    const auto number = parse_number(*text);
    return number ? std::optional(as_double(*number)) : std::nullopt;
  }
  return reading.number();
}

}  // namespace kova_host
