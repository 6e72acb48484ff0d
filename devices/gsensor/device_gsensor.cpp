// Reads, writes and elements of the accelerometer.
#include "devices/gsensor/device_gsensor.h"

#include "devices/gsensor/gsensor_items.h"
#include "framework/element.h"
#include "framework/item_id.h"
#include "framework/written_value.h"

namespace {

constexpr unsigned int kGToRaw = 10000;

enum class Kind { kModeSwitch, kOffset, kDataRate, kMeasuringRange, kReading, kNone };

Kind kind_of(unsigned int id) {
  if (item_id::group(id) == gsensor::kData) {
    return Kind::kReading;
  }
  if (item_id::group(id) != gsensor::kSettings) {
    return Kind::kNone;
  }
  switch (item_id::subgroup(id)) {
    case 0x10:
      return Kind::kModeSwitch;
    case 0x20:
      return Kind::kOffset;
    case 0x30:
      return Kind::kDataRate;
    case 0x40:
      return Kind::kMeasuringRange;
    default:
      return Kind::kNone;
  }
}

// The codes a combobox offers; code 0 of the normal data rate reads but is not offered.
const char* offered_codes(unsigned int id) {
  switch (kind_of(id)) {
    case Kind::kDataRate:
      return id == gsensor::kSleepRate ? "1|2|4|8" : "1|2|3|4|5|6|7|8|9|10|11|12|13|14|15";
    case Kind::kMeasuringRange:
      return "2|4|8|16";
    default:
      return "";
  }
}

// Switches and codes live in the word's low byte; offsets and readings take all of it.
void make_element(unsigned int id, unsigned int raw, json_t** out) {
  const Kind kind = kind_of(id);
  if (kind == Kind::kNone) {
    return;
  }
  const std::string& name = Device_GSensor::device_name_map[id];
  const unsigned int low_byte = raw & 0xFFU;
  switch (kind) {
    case Kind::kModeSwitch:
      IoTJsonUtility::create_json_element(name, id, low_byte != 0, "rw", "checkbox", out);
      break;
    case Kind::kOffset:
      IoTJsonUtility::create_json_element(name, id, raw_to_g(raw), "rw", "textbox", out);
      break;
    case Kind::kReading:
      IoTJsonUtility::create_json_element(name, id, raw_to_g(raw), "r", "label", out);
      break;
    default:
      IoTJsonUtility::create_json_element(name, id, static_cast<int>(low_byte), "rw", "combobox",
                                          out);
      break;
  }
}

std::uint32_t setting_word(unsigned int id, const json_t* value) {
  switch (kind_of(id)) {
    case Kind::kModeSwitch:
      return switch_word(value);
    case Kind::kOffset:
      return scaled_word(value, kGToRaw);
    case Kind::kDataRate:
    case Kind::kMeasuringRange:
      return integer_word(value);
    default:
      return 0;
  }
}

void publish(unsigned int id, unsigned int raw, json_t* value) {
  switch (kind_of(id)) {
    case Kind::kModeSwitch:
      json_integer_set(value, raw != 0 ? 1 : 0);
      break;
    case Kind::kOffset:
    case Kind::kReading:
      json_real_set(value, raw_to_g(raw));
      break;
    case Kind::kDataRate:
    case Kind::kMeasuringRange:
      json_integer_set(value, raw);
      break;
    case Kind::kNone:
      break;
  }
}

}  // namespace

double raw_to_g(unsigned int raw) {
  return static_cast<int>(raw) * Device_GSensor::FACTOR;
}

Status Device_GSensor::get_string_from_map(const StringMap& map, unsigned int id,
                                           std::string* out) {
  return catalogue::get_string_from_map(map, id, out);
}

std::string Device_GSensor::get_name_by_id(unsigned int id) {
  return catalogue::text_by_id(device_name_map, id);
}

std::string Device_GSensor::get_unit_by_id(unsigned int id) {
  return catalogue::text_by_id(unit_map, id);
}

std::string Device_GSensor::get_desc_by_id(unsigned int id) {
  return catalogue::text_by_id(desc_map, id);
}

Range Device_GSensor::get_range_by_id(unsigned int id) {
  return catalogue::range_by_id(bound_map, id);
}

bool Device_GSensor::is_available() {
  return catalogue::is_available(get_func, kova_id_map, gsensor::kPresence);
}

Status Device_GSensor::get_value_by_id(unsigned int id, unsigned int* raw) {
  return catalogue::read_raw(get_func, kova_id_map, id, raw);
}

void Device_GSensor::get_raw_values(unsigned int first, unsigned int end, RawMap* out) {
  catalogue::read_raw_range(get_func, kova_id_map, gsensor::kPresence, first, end, out);
}

Status Device_GSensor::get_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  unsigned int raw = 0;
  if (const Status status = get_value_by_id(id, &raw); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  publish(id, raw, value);
  return json_is_object(value) && json_object_size(value) != 0 ? IOT_STATUS_SUCCESS
                                                               : IOT_STATUS_READ_FAILED;
}

Status Device_GSensor::set_value_by_id(unsigned int id, json_t* value) {
  if (set_func == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  if (!json_is_number(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  if (item_id::group(id) != gsensor::kSettings) {
    return IOT_STATUS_UNSUPPORTED;
  }
  return set_func(kova_id_map[id], setting_word(id, value)) == 0 ? IOT_STATUS_SUCCESS
                                                                 : IOT_STATUS_WRITE_FAILED;
}

Status Device_GSensor::create_json_element(unsigned int id, void* raw, json_t** out) {
  return build_element(out, [&] {
    make_element(id, *static_cast<const unsigned int*>(raw), out);
    return end_element(out, {.options = offered_codes(id),
                             .range = get_range_by_id(id),
                             .description = get_desc_by_id(id),
                             .unit = get_unit_by_id(id)});
  });
}

RawMap Device_GSensor::get_settings_map() {
  mode_values_.clear();
  rate_values_.clear();
  offset_values_.clear();
  range_values_.clear();
  update_settings();
  RawMap settings = mode_values_;
  for (const RawMap* group : {&rate_values_, &offset_values_, &range_values_}) {
    settings.insert(group->begin(), group->end());
  }
  return settings;
}

RawMap Device_GSensor::get_data_map() {
  data_values_.clear();
  update_data();
  return data_values_;
}

void Device_GSensor::update_settings() {
  get_raw_values(gsensor::kFirstMode, gsensor::kModeEnd, &mode_values_);
  get_raw_values(gsensor::kFirstOffset, gsensor::kOffsetEnd, &offset_values_);
  get_raw_values(gsensor::kNormalRate, gsensor::kSleepRate + 1, &rate_values_);
  get_raw_values(gsensor::kRange, gsensor::kRange + 1, &range_values_);
}

void Device_GSensor::update_data() {
  get_raw_values(gsensor::kFirstReading, gsensor::kReadingEnd, &data_values_);
}
