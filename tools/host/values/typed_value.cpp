// Turns the text typed for a `set` into the number to send.
#include "tools/host/values/typed_value.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "tools/host/system/errors.h"
#include "tools/host/system/typed_number.h"
#include "tools/host/values/typed_quantity.h"

namespace kova_host {
namespace {

[[noreturn]] void refuse(const Item& item, std::string_view text, std::string_view reason) {
  throw HostError(Fault::usage,
                  fmt::format("'{}' is no value for {}: {}", text, label_of(item), reason));
}

const std::vector<Option>& switch_words() {
  static const std::vector<Option> words = {{1, "on"},  {0, "off"}, {1, "enable"}, {0, "disable"},
                                            {1, "yes"}, {0, "no"},  {1, "true"},   {0, "false"}};
  return words;
}

// The item's labels, and for a switch the words that people have for on and off: "on" is what the
// device calls 1, whatever the label.
std::vector<Option> choices(const Item& item) {
  std::vector<Option> result = item.options;
  if (item.kind == ValueKind::boolean) {
    result.insert(result.end(), switch_words().begin(), switch_words().end());
  }
  return result;
}

// "0 (Auto), 1 (12V), 2 (24V)"
std::string choice_list(const Item& item) {
  std::string labels;
  for (const Option& option : item.options.empty() ? choices(item) : item.options) {
    labels += fmt::format("{}{} ({})", labels.empty() ? "" : ", ", option.value, option.label);
  }
  return labels;
}

// Nothing for a text that is no label.
std::optional<int64_t> value_of_label(const Item& item, std::string_view text) {
  std::set<int64_t> matches;
  for (const Option& option : choices(item)) {
    if (option.label == text) {
      return option.value;
    }
    if (same_word(option.label, text)) {
      matches.insert(option.value);
    }
  }
  if (matches.size() > 1) {
    refuse(item, text, "several options are called so, give the number");
  }
  return matches.empty() ? std::nullopt : std::optional(*matches.begin());
}

// "24" where 24V was meant is a number that the device would take for something else.
std::string half_a_label(const Item& item, std::string_view text) {
  for (const Option& option : item.options) {
    if (option.label.size() > text.size() && option.label.starts_with(text) &&
        !parse_number(option.label.substr(0, text.size() + 1))) {
      return fmt::format("; was {} meant?", option.label);
    }
  }
  return "";
}

// What the device makes of a number that is none of its options nobody can tell.
void refuse_what_is_no_option(const Item& item, std::string_view text, const Number& number) {
  const auto is_value = [&number](const Option& option) {
    return as_double(number) == static_cast<double>(option.value);
  };
  if (!item.options.empty() && std::none_of(item.options.begin(), item.options.end(), is_value)) {
    refuse(item, text,
           fmt::format("it takes one of {}{}", choice_list(item), half_a_label(item, text)));
  }
}

// In half the world's countries a number has a comma where this program wants a point.
void refuse_comma(const Item& item, std::string_view text) {
  std::string pointed(text);
  std::replace(pointed.begin(), pointed.end(), ',', '.');
  if (pointed != text && parse_quantity(pointed)) {
    refuse(item, text, fmt::format("numbers have a point, as in {}", pointed));
  }
}

// Device words have 32 bits; a wider number would reach the device as a different one.
int64_t device_word(const Item& item, std::string_view text, int64_t value) {
  if (value < INT32_MIN || value > static_cast<int64_t>(UINT32_MAX)) {
    refuse(item, text, "it has more than 32 bits");
  }
  return value;
}

// The number that is sent for `number`.
Number sent_for(const Item& item, std::string_view text, const Number& number) {
  if (const auto* integer = std::get_if<int64_t>(&number)) {
    return device_word(item, text, *integer);
  }
  const double real = std::get<double>(number);
  if (item.kind != ValueKind::integer && item.kind != ValueKind::boolean) {
    const bool scaled = item.facts.written_as == WrittenAs::scaled && item.facts.scale;
    return scaled ? nearest_held(real, *item.facts.scale) : real;
  }
  if (real != std::trunc(real)) {
    refuse(item, text, "the item takes whole numbers");
  }
  if (std::abs(real) > static_cast<double>(UINT32_MAX)) {
    refuse(item, text, "it has more than 32 bits");
  }
  return device_word(item, text, static_cast<int64_t>(real));
}

}  // namespace

Number value_to_set(const Item& item, std::string_view text) {
  const auto typed = parse_quantity(text);
  if (typed && typed->unit.empty()) {
    refuse_what_is_no_option(item, text, typed->number);
    return sent_for(item, text, typed->number);
  }
  if (const auto value = value_of_label(item, text)) {
    return *value;
  }
  refuse_comma(item, text);
  if (!choices(item).empty()) {
    refuse(item, text, fmt::format("a number or one of {} is needed", choice_list(item)));
  }
  if (!typed) {
    refuse(item, text, "a number is needed");
  }
  const auto number = in_unit(*typed, item.unit);
  if (!number) {
    refuse(item, text, item.unit.empty() ? "it has no unit" : "its unit is " + item.unit);
  }
  return sent_for(item, text, *number);
}

double nearest_held(double value, double scale) {
  // As the module has it: its factor is the whole number that the scale is the inverse of.
  const double factor = std::round(1 / scale);
  const double count = std::round(value * factor);
  double sent = count / factor;
  while (std::isfinite(sent) && std::abs(std::trunc(sent * factor)) < std::abs(count)) {
    sent = std::nextafter(sent, std::copysign(std::numeric_limits<double>::infinity(), count));
  }
  return sent;
}

void require_writable(const std::vector<Item>& items, const Item& item) {
  const std::string name = item.name.empty() ? id_text(item.id) : path_of(item);
  if (item.facts.role == Role::factory_default) {
    const auto setting = std::find_if(items.begin(), items.end(), [&item](const Item& other) {
      return other.id == item.facts.factory_default_of;
    });
    throw HostError(
        Fault::usage,
        fmt::format("{} is a factory default and cannot be changed{}", name,
                    setting == items.end() ? std::string()
                                           : "; a write to it would change " + path_of(*setting)));
  }
  if (item.access == "r") {
    throw HostError(Fault::usage, fmt::format("{} is read-only", name));
  }
}

JsonPtr to_json(const Number& number) {
  if (const auto* integer = std::get_if<int64_t>(&number)) {
    return own(json_integer(*integer));
  }
  return own(json_real(std::get<double>(number)));
}

}  // namespace kova_host
