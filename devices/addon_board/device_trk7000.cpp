// Reads and elements of the add-on board.
#include "devices/addon_board/device_trk7000.h"

#include <array>
#include <charconv>

#include "devices/addon_board/trk7000_items.h"
#include "framework/element.h"
#include "framework/item_id.h"

namespace {

// A version word holds a letter in bits 23..16, the major number in 15..8 and the minor in 7..0:
// 0x00560102 is V1.2. The EC type's middle number is hexadecimal.
std::string version_text(unsigned int raw, int major_base) {
  std::array<char, 8> digits{};
  std::string text(1, static_cast<char>((raw >> 16U) & 0xFFU));
  const auto major =
      std::to_chars(digits.begin(), digits.end(), (raw >> 8U) & 0xFFU, major_base).ptr;
  text.append(digits.begin(), major);
  text += '.';
  const auto minor = std::to_chars(digits.begin(), digits.end(), raw & 0xFFU).ptr;
  text.append(digits.begin(), minor);
  return text;
}

std::string info_text(unsigned int id, unsigned int raw) {
  switch (id) {
    case trk7000::kFirmwareVersion:
    case trk7000::kKernelVersion:
      return version_text(raw, 10);
    case trk7000::kEcType:
      return version_text(raw, 16);
    default:
      return "";  // not reached: no other item is read with the group
  }
}

void make_element(unsigned int id, const void* value, json_t** out) {
  const std::string& name = Device_TRK7000::device_name_map[id];
  if (item_id::group(id) == trk7000::kInformation) {
    const auto& text = *static_cast<const std::string*>(value);
    IoTJsonUtility::create_json_element(name, id, text, "r", "label", out);
    return;
  }
  const unsigned int raw = *static_cast<const unsigned int*>(value);
  const bool temperature = item_id::group(id) == trk7000::kTemperatures;
  IoTJsonUtility::create_json_element(
      name, id, temperature ? decikelvin_to_celsius(raw) : static_cast<int>(raw), "r", "label",
      out);
}

}  // namespace

int decikelvin_to_celsius(unsigned int decikelvin) {
  // The largest word, 429,496,729.5 K, still fits an int.
  const double half_up = decikelvin * 0.1 - 273.15 + 0.5;
  return static_cast<int>(half_up);
}

Status Device_TRK7000::get_string_from_map(const StringMap& map, unsigned int id,
                                           std::string* out) {
  return catalogue::get_string_from_map(map, id, out);
}

std::string Device_TRK7000::get_name_by_id(unsigned int id) {
  return catalogue::text_by_id(device_name_map, id);
}

std::string Device_TRK7000::get_unit_by_id(unsigned int id) {
  return catalogue::text_by_id(unit_map, id);
}

std::string Device_TRK7000::get_desc_by_id(unsigned int id) {
  return catalogue::text_by_id(desc_map, id);
}

Range Device_TRK7000::get_range_by_id(unsigned int id) {
  return catalogue::range_by_id(bound_map, id);
}

bool Device_TRK7000::is_available() {
  return catalogue::is_available(get_func, kova_id_map, trk7000::kPresence);
}

Status Device_TRK7000::get_value_by_id(unsigned int id, unsigned int* raw) {
  return catalogue::read_raw(get_func, kova_id_map, id, raw);
}

void Device_TRK7000::get_raw_values(unsigned int first, unsigned int end, RawMap* out) {
  catalogue::read_raw_range(get_func, kova_id_map, trk7000::kPresence, first, end, out);
}

Status Device_TRK7000::get_info_to_map(StringMap* out) {
  return catalogue::read_texts(get_func, kova_id_map, trk7000::kPresence, trk7000::kFirmwareVersion,
                               trk7000::kKernelVersion + 1, info_text, out);
}

Status Device_TRK7000::get_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  const unsigned int group = item_id::group(id);
  if (group == trk7000::kInformation) {
    StringMap texts;
    if (const Status status = get_info_to_map(&texts); status != IOT_STATUS_SUCCESS) {
      return status;
    }
    return publish_text(texts, id, value);
  }
  if (group != trk7000::kTemperatures && group != trk7000::kFanSpeeds) {
    return IOT_STATUS_UNSUPPORTED;
  }
  unsigned int raw = 0;
  if (const Status status = get_value_by_id(id, &raw); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  json_integer_set(value,
                   group == trk7000::kTemperatures ? json_int_t{decikelvin_to_celsius(raw)} : raw);
  return IOT_STATUS_SUCCESS;
}

Status Device_TRK7000::create_json_element(unsigned int id, void* value, json_t** out) {
  return build_element(out, [&] {
    const unsigned int group = item_id::group(id);
    if (group == trk7000::kTemperatures || group == trk7000::kFanSpeeds ||
        group == trk7000::kInformation) {
      make_element(id, value, out);
    }
    return end_element(out, {.range = get_range_by_id(id),
                             .description = get_desc_by_id(id),
                             .unit = get_unit_by_id(id)});
  });
}

RawMap Device_TRK7000::get_temps() {
  bt_values_.clear();
  vtin_values_.clear();
  update_temps();
  RawMap temperatures = vtin_values_;
  temperatures.insert(bt_values_.begin(), bt_values_.end());
  return temperatures;
}

RawMap Device_TRK7000::get_ob_fans() {
  ob_fan_values_.clear();
  update_ob_fans();
  return ob_fan_values_;
}

StringMap Device_TRK7000::get_info_map() {
  info_values_.clear();
  update_info();
  return info_values_;
}

void Device_TRK7000::update_temps() {
  get_raw_values(trk7000::kFirstVtin, trk7000::kVtinEnd, &vtin_values_);
  get_raw_values(trk7000::kFirstBt, trk7000::kBtEnd, &bt_values_);
}

void Device_TRK7000::update_ob_fans() {
  get_raw_values(trk7000::kFirstFan, trk7000::kFanEnd, &ob_fan_values_);
}

Status Device_TRK7000::update_info() {
  return get_info_to_map(&info_values_);
}
