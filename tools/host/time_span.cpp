// Spans of time as they are typed.
#include "tools/host/time_span.h"

#include <variant>

#include "tools/host/text_value.h"

namespace kova_host {
namespace {

struct TimeUnit {
  std::string_view suffix;
  double seconds;
};
// The longer suffix first: "ms" ends with "s".
constexpr TimeUnit kTimeUnits[] = {{"ms", 0.001}, {"s", 1}, {"m", 60}, {"h", 3600}, {"", 1}};

}  // namespace

std::optional<double> parse_time_span(std::string_view text) {
  for (const auto& [suffix, factor] : kTimeUnits) {
    if (text.ends_with(suffix)) {
      const auto number = parse_number(text.substr(0, text.size() - suffix.size()));
      if (!number) {
        return std::nullopt;
      }
      return std::visit([](auto value) { return static_cast<double>(value); }, *number) * factor;
    }
  }
  return std::nullopt;
}

}  // namespace kova_host
