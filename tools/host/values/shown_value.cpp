// Readings as people see them. fmt's plain formats know no locale.
#include "tools/host/values/shown_value.h"

#include <fmt/format.h>

#include "tools/host/model/status_text.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/system/typed_number.h"

namespace kova_host {
namespace {

// A text such as "3200" reads well with its unit, one such as "2 h 5 m" bears its own.
bool wants_unit(const Item& item, const Reading& reading) {
  const auto* text = std::get_if<std::string>(&reading.value);
  return !item.unit.empty() && (text == nullptr || parse_number(*text).has_value());
}

std::string bare_text(const Reading& reading) {
  if (const auto* real = std::get_if<double>(&reading.value)) {
    return short_number(*real);
  }
  return plain_value(reading);
}

}  // namespace

std::string short_number(double value) {
  return fmt::format("{:.12g}", value);
}

std::string plain_value(const Reading& reading) {
  if (const auto* integer = std::get_if<int64_t>(&reading.value)) {
    return fmt::format("{}", *integer);
  }
  if (const auto* real = std::get_if<double>(&reading.value)) {
    return fmt::format("{:.15g}", *real);
  }
  if (const auto* text = std::get_if<std::string>(&reading.value)) {
    return printable(*text);
  }
  if (reading.redacted) {
    return "redacted";
  }
  return reading.state == Reading::State::absent ? "N/A" : "unreadable";
}

std::string value_with_unit(const Item& item, const Reading& reading) {
  std::string text = bare_text(reading);
  if (reading.state == Reading::State::failed) {
    return (item.missing ? "" : text + ": ") + failure_text(item, reading);
  }
  if (reading.state == Reading::State::absent) {
    return text;
  }
  if (const auto* integer = std::get_if<int64_t>(&reading.value)) {
    if (const auto label = option_label(item, *integer); !label.empty()) {
      return fmt::format("{} ({})", text, printable(label));
    }
  }
  if (wants_unit(item, reading)) {
    text += ' ' + printable(item.unit);
  }
  return text;
}

std::string failure_reason(const Reading& reading) {
  return reading.reason.empty() ? read_failure(reading.status) : reading.reason;
}

std::string failure_text(const Item& item, const Reading& reading) {
  if (!reading.in_part.empty()) {
    return fmt::format("in part only, '{}': {}", printable(reading.in_part),
                       read_failure(reading.status));
  }
  if (!item.missing) {
    return failure_reason(reading);
  }
  return reading.status == 0 ? "missing: this machine does not have it"
                             : "missing: " + failure_reason(reading);
}

std::string range_text(const Item& item) {
  if (!item.min && !item.max) {
    return "";
  }
  const auto end = [](const std::optional<double>& v) { return v ? short_number(*v) : "?"; };
  return fmt::format("{} .. {}", end(item.min), end(item.max));
}

}  // namespace kova_host
