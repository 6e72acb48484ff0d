// Reading and applying alert ranges.
#include "tools/host/judgements/alert_range.h"

#include "tools/host/system/typed_number.h"

namespace kova_host {
namespace {

std::optional<double> end_of_range(std::string_view text) {
  const auto number = parse_number(text);
  return number ? std::optional(as_double(*number)) : std::nullopt;
}

}  // namespace

bool AlertRange::alerts(double value) const {
  const bool within = value >= start && value <= end;
  return within == inside;
}

std::optional<AlertRange> parse_alert_range(std::string_view text) {
  AlertRange range;
  range.text = text;
  if (text.starts_with('@')) {
    range.inside = true;
    text.remove_prefix(1);
  }
  std::string_view upper = text;
  if (const size_t colon = text.find(':'); colon != std::string_view::npos) {
    const std::string_view lower = text.substr(0, colon);
    upper = text.substr(colon + 1);
    const auto start = lower == "~" ? std::optional(-std::numeric_limits<double>::infinity())
                                    : end_of_range(lower);
    if (!start) {
      return std::nullopt;
    }
    range.start = *start;
    if (upper.empty()) {
      return range;
    }
  }
  const auto end = end_of_range(upper);
  if (!end || range.start > *end) {
    return std::nullopt;
  }
  range.end = *end;
  return range;
}

}  // namespace kova_host
