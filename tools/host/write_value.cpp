// Turns the text typed for a `set` into the number to send.
#include "tools/host/write_value.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "tools/host/errors.h"

namespace kova_host {
namespace {

[[noreturn]] void refuse(const Item& item, std::string_view text, std::string_view reason) {
  throw HostError(Fault::usage,
                  fmt::format("'{}' is no value for {}: {}", text, id_text(item.id), reason));
}

const std::vector<Option>& switch_words() {
  static const std::vector<Option> words = {{1, "on"},  {0, "off"}, {1, "enable"}, {0, "disable"},
                                            {1, "yes"}, {0, "no"},  {1, "true"},   {0, "false"}};
  return words;
}

bool is_switch_word(const Option& option) {
  return std::any_of(switch_words().begin(), switch_words().end(), [&option](const Option& word) {
    return word.value == option.value && same_word(word.label, option.label);
  });
}

// The item's labels, and the words that people have for on and off where these are its choices.
std::vector<Option> choices(const Item& item) {
  std::vector<Option> result = item.options;
  if (item.kind == ValueKind::boolean &&
      std::all_of(result.begin(), result.end(), is_switch_word)) {
    result.insert(result.end(), switch_words().begin(), switch_words().end());
  }
  return result;
}

int64_t value_of_label(const Item& item, std::string_view text) {
  const std::vector<Option> options = choices(item);
  std::set<int64_t> matches;
  for (const Option& option : options) {
    if (option.label == text) {
      return option.value;
    }
    if (same_word(option.label, text)) {
      matches.insert(option.value);
    }
  }
  if (matches.size() == 1) {
    return *matches.begin();
  }
  if (matches.size() > 1) {
    refuse(item, text, "several options are called so, give the number");
  }
  if (options.empty()) {
    refuse(item, text, "a number is needed");
  }
  std::string labels;
  for (const Option& option : options) {
    labels += fmt::format("{}{} ({})", labels.empty() ? "" : ", ", option.value, option.label);
  }
  refuse(item, text, "a number or one of " + labels + " is needed");
}

// Device words have 32 bits; a wider number would reach the device as a different one.
int64_t device_word(const Item& item, std::string_view text, int64_t value) {
  if (value < INT32_MIN || value > static_cast<int64_t>(UINT32_MAX)) {
    refuse(item, text, "it has more than 32 bits");
  }
  return value;
}

}  // namespace

Number value_to_set(const Item& item, std::string_view text) {
  const auto number = parse_number(text);
  if (!number) {
    return value_of_label(item, text);
  }
  if (const auto* integer = std::get_if<int64_t>(&*number)) {
    return device_word(item, text, *integer);
  }
  const double real = std::get<double>(*number);
  if (item.kind != ValueKind::integer && item.kind != ValueKind::boolean) {
    return real;
  }
  if (real != std::trunc(real)) {
    refuse(item, text, "the item takes whole numbers");
  }
  if (std::abs(real) > static_cast<double>(UINT32_MAX)) {
    refuse(item, text, "it has more than 32 bits");
  }
  return device_word(item, text, static_cast<int64_t>(real));
}

JsonPtr to_json(const Number& number) {
  if (const auto* integer = std::get_if<int64_t>(&number)) {
    return own(json_integer(*integer));
  }
  return own(json_real(std::get<double>(number)));
}

}  // namespace kova_host
