// The PoE ports: one table of the port items' kinds, and the reads, writes and elements over it.
#include "devices/poe/device_poe.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "devices/poe/poe_items.h"
#include "framework/element.h"
#include "framework/item_id.h"

ReadEntry Device_PoE::get_func = nullptr;
WriteEntry Device_PoE::set_func = nullptr;
const std::string Device_PoE::NAME_DEVICE = "PoE";

namespace {

constexpr unsigned int kPresenceCode = 0x200000;

// What the kind of a port item settles. A port's device code is the base plus the port number.
struct PortKind {
  unsigned int group;
  unsigned int code_base;
  std::string_view word{};  // empty: not a published kind
  std::string_view unit{};
  double max{};  // the lower bound of every kind is 0
};

constexpr std::array kPortKinds{
    PortKind{.group = poe::kDetect, .code_base = 0x21FFFF, .word = "detect", .max = 7},
    PortKind{.group = poe::kClass, .code_base = 0x22FFFF, .word = "class", .max = 7},
    PortKind{
        .group = poe::kCurrent, .code_base = 0x23FFFF, .word = "current", .unit = "mA", .max = 600},
    PortKind{
        .group = poe::kVoltage, .code_base = 0x24FFFF, .word = "voltage", .unit = "V", .max = 100},
    PortKind{.group = poe::kPortProbe, .code_base = 0x25FFFF},
    PortKind{.group = poe::kPower, .code_base = 0x26FFFF, .word = "power", .max = 1},
};

const PortKind* port_kind(unsigned int id) {
  const auto* const found = std::ranges::find(kPortKinds, item_id::group(id), &PortKind::group);
  return found == kPortKinds.end() ? nullptr : found;
}

// The kind of a published item of a numbered port, or null: headings (port 0) have neither unit
// nor range.
const PortKind* published_port_kind(unsigned int id) {
  const PortKind* kind = item_id::unit_number(id) != 0 ? port_kind(id) : nullptr;
  return kind != nullptr && !kind->word.empty() ? kind : nullptr;
}

}  // namespace

Device_PoE::Device_PoE() : port_count_(getPortNumber()) {}

unsigned int Device_PoE::getKovaID(unsigned int id) {
  if (id == poe::kPresence) {
    return kPresenceCode;
  }
  const PortKind* kind = port_kind(id);
  return kind != nullptr ? kind->code_base + item_id::unit_number(id) : kNoCode;
}

Status Device_PoE::get_value_by_id(unsigned int id, unsigned int* raw) {
  const unsigned int code = getKovaID(id);
  return code != kNoCode && get_func != nullptr ? get_func(code, raw) : IOT_STATUS_UNSUPPORTED;
}

Status Device_PoE::set_value_by_id(unsigned int id, unsigned int raw) {
  const unsigned int code = getKovaID(id);
  return code != kNoCode && set_func != nullptr ? set_func(code, raw) : IOT_STATUS_UNSUPPORTED;
}

bool Device_PoE::is_available() {
  unsigned int raw = 0;
  return get_value_by_id(poe::kPresence, &raw) == IOT_STATUS_SUCCESS && raw != 0;
}

unsigned char Device_PoE::getPortNumber() {
  for (const unsigned int last_port : {8U, 4U}) {
    unsigned int raw = 0;
    if (get_value_by_id(poe::kPortProbe + last_port, &raw) == IOT_STATUS_SUCCESS && raw == 1) {
      return static_cast<unsigned char>(last_port);
    }
  }
  return 0;
}

std::string Device_PoE::get_name_by_id(unsigned int id) {
  if (id == poe::kPresence) {
    return "Available";
  }
  const PortKind* kind = port_kind(id);
  if (kind == nullptr || kind->word.empty()) {
    return "";
  }
  const unsigned int port = item_id::unit_number(id);
  return "PoE " + (port != 0 ? std::to_string(port) + " " : "") + std::string(kind->word);
}

std::string Device_PoE::get_unit_by_id(unsigned int id) {
  const PortKind* kind = published_port_kind(id);
  return kind != nullptr ? std::string(kind->unit) : "";
}

std::string Device_PoE::get_desc_by_id(unsigned int id) {
  const PortKind* kind = published_port_kind(id);
  return kind != nullptr && kind->group == poe::kPower ? "0=Disable|1=Enable" : "";
}

Range Device_PoE::get_range_by_id(unsigned int id) {
  const PortKind* kind = published_port_kind(id);
  return kind != nullptr ? Range{{MIN, 0.0}, {MAX, kind->max}} : Range{};
}

Status Device_PoE::create_json_element(unsigned int id, void* data, json_t** out) {
  return build_element(out, [&] {
    const unsigned int group = item_id::group(id);
    const auto byte = [data] { return *static_cast<const unsigned char*>(data); };
    if (group == poe::kVoltage || group == poe::kCurrent) {
      const double value = *static_cast<const unsigned int*>(data) * FACTOR;
      IoTJsonUtility::create_json_element(get_name_by_id(id), id, value, "r", "label", out);
    } else if (group == poe::kDetect || group == poe::kClass) {
      IoTJsonUtility::create_json_element(get_name_by_id(id), id, int{byte()}, "r", "label", out);
    } else if (group == poe::kPower) {
      IoTJsonUtility::create_json_element(get_name_by_id(id), id, byte() != 0, "rw", "checkbox",
                                          out);
    }
    // Hosts know the switches by their checkbox: the option list is looked up for the heading,
    // which has none, and so never stands in an element.
    return end_element(out, {.range = get_range_by_id(id),
                             .description = get_desc_by_id(group),
                             .unit = get_unit_by_id(id)});
  });
}

Status Device_PoE::get_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  unsigned int raw = 0;
  if (const Status status = get_value_by_id(id, &raw); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  switch (item_id::group(id)) {
    case poe::kVoltage:
    case poe::kCurrent:
      json_real_set(value, raw * FACTOR);
      return IOT_STATUS_SUCCESS;
    case poe::kDetect:
    case poe::kClass:
    case poe::kPower:
      json_integer_set(value, raw);
      return IOT_STATUS_SUCCESS;
    default:
      return IOT_STATUS_UNSUPPORTED;
  }
}

Status Device_PoE::set_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  if (item_id::group(id) != poe::kPower) {
    return IOT_STATUS_UNSUPPORTED;
  }
  if (!json_is_integer(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  const unsigned int wanted = json_integer_value(value) >= 1 ? 1 : 0;
  unsigned int current = 0;
  if (const Status status = get_value_by_id(id, &current); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  return current == wanted ? IOT_STATUS_SUCCESS : set_value_by_id(id, wanted);
}

template <typename Value>
void Device_PoE::refresh(unsigned int kind, std::map<unsigned int, Value>* map) const {
  if (get_func == nullptr) {
    return;
  }
  for (unsigned int port = 1; port <= port_count_; ++port) {
    unsigned int raw = 0;
    if (get_value_by_id(kind + port, &raw) == IOT_STATUS_SUCCESS) {
      (*map)[kind + port] = static_cast<Value>(raw);
    }
  }
}

Device_PoE::ByteMap Device_PoE::get_poe_port_power() {
  refresh(poe::kPower, &power_);
  return power_;
}

Device_PoE::ByteMap Device_PoE::get_poe_detects() {
  refresh(poe::kDetect, &detects_);
  return detects_;
}

Device_PoE::ByteMap Device_PoE::get_poe_classes() {
  refresh(poe::kClass, &classes_);
  return classes_;
}

RawMap Device_PoE::get_poe_voltages() {
  refresh(poe::kVoltage, &voltages_);
  return voltages_;
}

RawMap Device_PoE::get_poe_currents() {
  refresh(poe::kCurrent, &currents_);
  return currents_;
}
