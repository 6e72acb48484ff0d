// Reads items. A value handed to the module is preset to something no item can report: what is
// untouched afterwards was not read, whatever the status says.
#include "tools/host/values/reading.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "include/kova_iot.h"
#include "tools/host/model/item_data.h"
#include "tools/host/session/direct_device.h"

namespace kova_host {
namespace {

// Items are 32-bit words, scaled by at most 1: none reaches these.
constexpr json_int_t kUntouchedInteger = std::numeric_limits<json_int_t>::min();
constexpr double kUntouchedReal = 1e300;
constexpr const char* kUntouchedText = "\x01untouched";

JsonPtr preset(ValueKind kind) {
  switch (kind) {
    case ValueKind::text:
      return own(json_string(kUntouchedText));
    case ValueKind::real:
      return own(json_real(kUntouchedReal));
    default:
      return own(json_integer(kUntouchedInteger));
  }
}

decltype(Reading::value) filled_value(const json_t* json) {
  switch (json_typeof(json)) {
    case JSON_STRING: {
      std::string text(json_string_value(json), json_string_length(json));
      return text == kUntouchedText ? decltype(Reading::value)() : text;
    }
    case JSON_REAL: {
      const double real = json_real_value(json);
      return real == kUntouchedReal ? decltype(Reading::value)() : real;
    }
    default: {
      const json_int_t integer = json_integer_value(json);
      return integer == kUntouchedInteger ? decltype(Reading::value)()
                                          : static_cast<int64_t>(integer);
    }
  }
}

// Accelerometer reads into a scalar report a failure even when they have filled it.
bool status_allows_value(uint32_t id, uint32_t status) {
  const FamilyData* family = family_of(id);
  return status == IOT_STATUS_SUCCESS || (family != nullptr && status == family->status_when_read);
}

// Memory modules list fields that only one series of modules carries, and the battery times that
// an idle battery does not have. The device answered; there is just nothing to show.
bool does_not_apply(const Item& item, uint32_t status) {
  const FamilyData* family = family_of(item.id);
  return item.kind.has_value() && family != nullptr && status == family->status_without_value;
}

// Texts alone are blanked, and those that a blank takes along.
bool is_redacted(const Item& item) {
  const auto device = item.kind == ValueKind::text ? DirectDevice::in_process() : std::nullopt;
  return device && std::any_of(item.facts.codes.begin(), item.facts.codes.end(),
                               [&](uint32_t code) { return device->is_redacted(code); });
}

// The status of the first of a text's words that cannot be read; 0 if all can.
uint32_t failing_word(const Item& item) {
  const bool has_words = item.facts.role == Role::identity && item.facts.codes.size() > 1;
  const auto device = has_words ? DirectDevice::in_process() : std::nullopt;
  if (device) {
    for (const uint32_t code : item.facts.codes) {
      if (const uint32_t status = device->read(code).status; status != 0) {
        return status;
      }
    }
  }
  return 0;
}

// What the words say of a value that the module gave.
Reading looked_into(const Item& item, Reading reading) {
  if (is_redacted(item)) {
    reading = {Reading::State::absent, IOT_STATUS_SUCCESS, {}};
    reading.redacted = true;
  } else if (const auto* text = std::get_if<std::string>(&reading.value)) {
    if (const uint32_t status = failing_word(item); status != 0) {
      reading = {Reading::State::failed, status, {}, *text};
    }
  }
  return reading;
}

Reading read_as(const Session& session, const Item& item, ValueKind kind) {
  const JsonPtr json = preset(kind);
  Reading reading;
  reading.status = session.read(item.id, json.get());
  auto value = filled_value(json.get());
  const auto* text = std::get_if<std::string>(&value);
  if (does_not_apply(item, reading.status) || (text != nullptr && *text == "N/A")) {
    reading.state = Reading::State::absent;
    reading.redacted = is_redacted(item);
  } else if (status_allows_value(item.id, reading.status) && value.index() != 0) {
    reading = looked_into(item, {Reading::State::good, IOT_STATUS_SUCCESS, std::move(value)});
  }
  return reading;
}

}  // namespace

std::optional<double> Reading::number() const {
  if (const auto* integer = std::get_if<int64_t>(&value)) {
    return static_cast<double>(*integer);
  }
  if (const auto* real = std::get_if<double>(&value)) {
    return *real;
  }
  return std::nullopt;
}

Reading read_item(const Session& session, const Item& item) {
  if (item.missing) {
    // Something may still answer under its ID; that makes no port or module of it.
    return {Reading::State::failed, session.read(item.id, own(json_null()).get()), {}};
  }
  if (item.kind) {
    return read_as(session, item, *item.kind);
  }
  // The module leaves a value of the wrong JSON type as it is, so the kinds can be tried in turn.
  Reading reading;
  for (const ValueKind kind : {ValueKind::integer, ValueKind::real, ValueKind::text}) {
    reading = read_as(session, item, kind);
    if (reading.state != Reading::State::failed || !status_allows_value(item.id, reading.status)) {
      break;
    }
  }
  return reading;
}

Readings read_items(const Session& session, const std::vector<Item>& items) {
  return *read_items(session, items, [](const Item&) { return true; });
}

std::optional<Readings> read_items(const Session& session, const std::vector<Item>& items,
                                   const BeforeRead& before_read) {
  Readings readings;
  for (const Item& item : items) {
    if (!before_read(item)) {
      return std::nullopt;
    }
    if (!readings.contains(item.id)) {
      readings.emplace(item.id, read_item(session, item));
    }
  }
  return readings;
}

bool any_failed(const Readings& readings) {
  return std::any_of(readings.begin(), readings.end(), [](const auto& entry) {
    return entry.second.state == Reading::State::failed;
  });
}

bool out_of_range(const Item& item, const Reading& reading) {
  const auto value = reading.number();
  if (!value) {
    return false;
  }
  // Scaled readings carry rounding in their last digit; that alone puts none outside.
  const double slack = std::abs(*value) * 1e-9;
  return (item.min && *value < *item.min - slack) || (item.max && *value > *item.max + slack);
}

}  // namespace kova_host
