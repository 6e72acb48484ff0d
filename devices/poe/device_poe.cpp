// The PoE ports: one row for each kind of a port's items, and the reads, writes and elements.
#include "devices/poe/device_poe.h"

#include <array>

#include "devices/poe/poe_items.h"
#include "framework/conversion.h"
#include "framework/element.h"
#include "framework/item_id.h"
#include "framework/load_time.h"

namespace {

using catalogue::Bounds;
using catalogue::Count;
using catalogue::Kind;
using catalogue::Role;
using catalogue::Row;
using catalogue::Shape;
using catalogue::Word;

constexpr unsigned int kPresenceCode = 0x200000;

constexpr Shape kReading{.role = Role::kReading, .kind = Kind::kReal, .scale = Device_PoE::FACTOR};
constexpr Shape kState{
    .role = Role::kState, .kind = Kind::kInteger, .word = Word::kLowByteInDocument};
constexpr Shape kSwitch{
    .role = Role::kSetting, .kind = Kind::kSwitch, .word = Word::kLowByteInDocument};

// One row for the items of a kind, in the order in which they stand in a port's package. An item's
// ID is the row's plus the number of the port; codes are port 1's.
constexpr std::array kRows{
    Row{.id = poe::kPower,
        .name = "power",
        .options = "0=Disable|1=Enable",
        .code = 0x270000,
        .range = Bounds{0, 1},
        .as = kSwitch,
        .note = "the options are not in the document"},
    Row{.id = poe::kDetect,
        .name = "detect",
        .code = 0x220000,
        .range = Bounds{0, 7},
        .as = kState},
    Row{.id = poe::kClass, .name = "class", .code = 0x230000, .range = Bounds{0, 7}, .as = kState},
    Row{.id = poe::kCurrent,
        .name = "current",
        .unit = "mA",
        .code = 0x240000,
        .range = Bounds{0, 600},
        .as = kReading,
        .note = "under the unit mA: raw 250 is published as 0.25"},
    Row{.id = poe::kVoltage,
        .name = "voltage",
        .unit = "V",
        .code = 0x250000,
        .range = Bounds{0, 100},
        .as = kReading},
    Row{.id = poe::kPortProbe, .code = 0x260000},
};

// There are as many ports as the last one that answers.
constexpr std::array kPortCounts{Count{.code = 0x260007, .count = 8},
                                 Count{.code = 0x260003, .count = 4}};

// The rows by bits 11..8 of the ID, in which the kinds differ.
constexpr unsigned int place_of(unsigned int id) {
  return (id >> 8) & 0xFU;
}

static_assert([]() consteval {
  for (const Row& row : kRows) {
    poe::check_kind(row);
  }
  return true;
}());

constexpr auto kKinds = [] {
  std::array<Row, 16> kinds{};
  kinds.fill({.id = 1});  // no group's: these have bits 7..0 clear
  for (const Row& row : kRows) {
    kinds[place_of(row.id)] = row;
  }
  return kinds;
}();

const Row* kind_of(unsigned int id) {
  const Row& kind = kKinds[place_of(id)];
  return kind.id == item_id::group(id) ? &kind : nullptr;
}

// The same for published items only.
const Row* published_kind_of(unsigned int id) {
  const Row* kind = kind_of(id);
  return kind != nullptr && is_published(*kind) ? kind : nullptr;
}

// And of a numbered port: headings (port 0) have neither unit nor range nor options.
const Row* port_kind_of(unsigned int id) {
  return item_id::instance(id) != 0 ? published_kind_of(id) : nullptr;
}

unsigned int code_of(const Row& kind, unsigned int id) {
  return *kind.code - 1 + item_id::instance(id);
}

void make_element(unsigned int id, const void* data, json_t** out) {
  const Row* kind = published_kind_of(id);
  if (kind == nullptr) {
    return;
  }
  const unsigned int raw = kind->as.kind == Kind::kReal ? *static_cast<const unsigned int*>(data)
                                                        : *static_cast<const unsigned char*>(data);
  create_first_keys(*kind, Device_PoE::get_name_by_id(id), id, raw, out);
}

constexpr int kPlace = load_time::place(2);

}  // namespace

ReadEntry Device_PoE::get_func = nullptr;
WriteEntry Device_PoE::set_func = nullptr;
[[gnu::init_priority(kPlace)]] const std::string Device_PoE::NAME_DEVICE =
    load_time::build(+[] { return std::string(poe::kSheet.name); });

constinit const catalogue::Sheet poe::kSheet{
    .name = "PoE",
    .title = "PoE ports",
    .id = poe::kFamily,
    .presence_code = kPresenceCode,
    .rows = kRows,
    .instances = catalogue::Instances{.word = "port",
                                      .max = 8,
                                      .code_step = 1,
                                      .package_suffix = " {n}",
                                      .in_item_names = true,
                                      .in_row_order = true,
                                      .counted_by = kPortCounts}};

Device_PoE::Device_PoE() : port_count_(getPortNumber()) {}

unsigned int Device_PoE::getKovaID(unsigned int id) {
  if (id == poe::kPresence) {
    return kPresenceCode;
  }
  const Row* kind = kind_of(id);
  return kind != nullptr ? code_of(*kind, id) : kNoCode;
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
  const Row* kind = published_kind_of(id);
  if (kind == nullptr) {
    return "";
  }
  const unsigned int port = item_id::instance(id);
  return NAME_DEVICE + " " + (port != 0 ? std::to_string(port) + " " : "") +
         std::string(kind->name);
}

std::string Device_PoE::get_unit_by_id(unsigned int id) {
  const Row* kind = port_kind_of(id);
  return kind != nullptr ? std::string(kind->unit) : "";
}

std::string Device_PoE::get_desc_by_id(unsigned int id) {
  const Row* kind = port_kind_of(id);
  return kind != nullptr ? std::string(kind->options) : "";
}

Range Device_PoE::get_range_by_id(unsigned int id) {
  const Row* kind = port_kind_of(id);
  const bool has_range = kind != nullptr && kind->range.has_value();
  return has_range ? Range{{MIN, kind->range->min}, {MAX, kind->range->max}} : Range{};
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
  const Row* kind = published_kind_of(id);
  if (kind == nullptr) {
    const Status status = get_value_by_id(id, &raw);
    return status == IOT_STATUS_SUCCESS ? IOT_STATUS_UNSUPPORTED : status;
  }
  if (const Status status = get_func(code_of(*kind, id), &raw); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  publish(kind->as, raw, value);
  return IOT_STATUS_SUCCESS;
}

Status Device_PoE::set_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  const Row* kind = kind_of(id);
  if (kind == nullptr || kind->as.role != Role::kSetting) {
    return IOT_STATUS_UNSUPPORTED;
  }
  if (!json_is_integer(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  const unsigned int wanted = word_of(kind->as, value);
  unsigned int current = 0;
  if (const Status status = get_func(code_of(*kind, id), &current); status != IOT_STATUS_SUCCESS) {
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
