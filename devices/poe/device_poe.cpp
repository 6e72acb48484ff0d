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

// How a kind of port item is published: a scaled real, a code, or an on/off switch.
enum class Published { kNot, kReal, kCode, kSwitch };

// What the kind of a port item settles. A port's device code is the base plus the port number.
struct PortKind {
  unsigned int group = 1;  // of an empty place: groups have bits 7..0 clear
  unsigned int code_base{};
  Published as = Published::kNot;
  std::string_view word{};
  std::string_view unit{};
  double max{};  // the lower bound of every kind is 0

  [[nodiscard]] unsigned int code(unsigned int id) const {
    return code_base + item_id::unit_number(id);
  }
};

constexpr std::array kRows{
    PortKind{.group = poe::kDetect,
             .code_base = 0x21FFFF,
             .as = Published::kCode,
             .word = "detect",
             .max = 7},
    PortKind{.group = poe::kClass,
             .code_base = 0x22FFFF,
             .as = Published::kCode,
             .word = "class",
             .max = 7},
    PortKind{.group = poe::kCurrent,
             .code_base = 0x23FFFF,
             .as = Published::kReal,
             .word = "current",
             .unit = "mA",
             .max = 600},
    PortKind{.group = poe::kVoltage,
             .code_base = 0x24FFFF,
             .as = Published::kReal,
             .word = "voltage",
             .unit = "V",
             .max = 100},
    PortKind{.group = poe::kPortProbe, .code_base = 0x25FFFF},
    PortKind{.group = poe::kPower,
             .code_base = 0x26FFFF,
             .as = Published::kSwitch,
             .word = "power",
             .max = 1},
};

// The rows by bits 11..8 of the ID, in which the kinds differ.
constexpr unsigned int place_of(unsigned int id) {
  return (id >> 8) & 0xFU;
}

constexpr auto kPortKinds = [] {
  std::array<PortKind, 16> kinds{};
  for (const PortKind& row : kRows) {
    kinds[place_of(row.group)] = row;
  }
  return kinds;
}();

const PortKind* port_kind(unsigned int id) {
  const PortKind& kind = kPortKinds[place_of(id)];
  return kind.group == item_id::group(id) ? &kind : nullptr;
}

Published published_as(unsigned int id) {
  const PortKind* kind = port_kind(id);
  return kind != nullptr ? kind->as : Published::kNot;
}

// The kind of a published item of a numbered port, or null: headings (port 0) have neither unit
// nor range.
const PortKind* published_port_kind(unsigned int id) {
  const PortKind* kind = item_id::unit_number(id) != 0 ? port_kind(id) : nullptr;
  return kind != nullptr && kind->as != Published::kNot ? kind : nullptr;
}

void make_element(unsigned int id, const void* data, json_t** out) {
  const auto byte = [data] { return *static_cast<const unsigned char*>(data); };
  const std::string name = Device_PoE::get_name_by_id(id);
  switch (published_as(id)) {
    case Published::kReal:
      IoTJsonUtility::create_json_element(
          name, id, *static_cast<const unsigned int*>(data) * Device_PoE::FACTOR, "r", "label",
          out);
      break;
    case Published::kCode:
      IoTJsonUtility::create_json_element(name, id, int{byte()}, "r", "label", out);
      break;
    case Published::kSwitch:
      IoTJsonUtility::create_json_element(name, id, byte() != 0, "rw", "checkbox", out);
      break;
    case Published::kNot:
      break;
  }
}

}  // namespace

Device_PoE::Device_PoE() : port_count_(getPortNumber()) {}

unsigned int Device_PoE::getKovaID(unsigned int id) {
  if (id == poe::kPresence) {
    return kPresenceCode;
  }
  const PortKind* kind = port_kind(id);
  return kind != nullptr ? kind->code(id) : kNoCode;
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
  if (kind == nullptr || kind->as == Published::kNot) {
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
  return kind != nullptr && kind->as == Published::kSwitch ? "0=Disable|1=Enable" : "";
}

Range Device_PoE::get_range_by_id(unsigned int id) {
  const PortKind* kind = published_port_kind(id);
  return kind != nullptr ? Range{{MIN, 0.0}, {MAX, kind->max}} : Range{};
}

Status Device_PoE::create_json_element(unsigned int id, void* data, json_t** out) {
  return build_element(out, [&] {
    make_element(id, data, out);
    // Hosts know the switches by their checkbox: the option list is looked up for the heading,
    // which has none, and so never stands in an element.
    return end_element(out, {.range = get_range_by_id(id),
                             .description = get_desc_by_id(item_id::group(id)),
                             .unit = get_unit_by_id(id)});
  });
}

Status Device_PoE::get_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  unsigned int raw = 0;
  const PortKind* kind = port_kind(id);
  if (kind == nullptr || kind->as == Published::kNot) {
    const Status status = get_value_by_id(id, &raw);
    return status == IOT_STATUS_SUCCESS ? IOT_STATUS_UNSUPPORTED : status;
  }
  if (const Status status = get_func(kind->code(id), &raw); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  if (kind->as == Published::kReal) {
    json_real_set(value, raw * FACTOR);
  } else {
    json_integer_set(value, raw);
  }
  return IOT_STATUS_SUCCESS;
}

Status Device_PoE::set_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  const PortKind* kind = port_kind(id);
  if (kind == nullptr || kind->as != Published::kSwitch) {
    return IOT_STATUS_UNSUPPORTED;
  }
  if (!json_is_integer(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  const unsigned int wanted = json_integer_value(value) >= 1 ? 1 : 0;
  unsigned int current = 0;
  if (const Status status = get_func(kind->code(id), &current); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  return current == wanted ? IOT_STATUS_SUCCESS : set_value_by_id(id, wanted);
}

template <typename Value>
void Device_PoE::refresh(unsigned int kind, std::map<unsigned int, Value>* map) const {
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
