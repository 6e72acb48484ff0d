// Reads, writes and elements of the power and ignition controller.
#include "devices/pic/device_pic.h"

#include <algorithm>

#include "devices/pic/pic_items.h"
#include "framework/element.h"
#include "framework/item_id.h"
#include "framework/written_value.h"

namespace {

constexpr unsigned int kVoltsToRaw = 10;

double tenths_to_volts(unsigned int raw) {
  return raw * Device_PIC::FACTOR;
}

bool is_voltage_setting(unsigned int number) {
  return number == pic::k12VThreshold || number == pic::k24VThreshold;
}

// On/off items, which elements publish as booleans.
bool is_switch(unsigned int id) {
  return id == pic::kIgnitionStatus || id == pic::kOutput48V ||
         (item_id::group(id) == pic::kSettings && item_id::index(id) == pic::kLowVoltageSwitch);
}

// Only the current values and the defaults of the eleven settings are published.
bool is_published_setting(unsigned int id) {
  const unsigned int number = item_id::index(id);
  const unsigned int view = id - number;
  return (view == pic::kCurrentView || view == pic::kDefaultView) && number >= 1 &&
         number <= pic::kSettingCount;
}

std::string info_text(unsigned int id, unsigned int raw) {
  switch (id) {
    case pic::kFirmwareVersion:
      return "V." + std::to_string(raw & 0xFFU);
    case pic::kSwitchStatus:
      return raw != 0 ? "HW mode" : "SW mode";
    case pic::kVehicleOrPcMode:
      return raw != 0 ? "PC mode" : "Vehicle mode";
    case pic::kBatteryType:
      return raw == 0 ? "ERR" : raw == 1 ? "12V" : "24V";
    default:
      return "";  // not reached: no other item is read with the group
  }
}

std::uint32_t setting_word(unsigned int number, const json_t* value) {
  if (number == pic::kLowVoltageSwitch) {
    return switch_word(value);
  }
  return is_voltage_setting(number) ? scaled_word(value, kVoltsToRaw) : integer_word(value);
}

// How an item is shown: access mode and user-interface hint. Defaults are "w", not "r": hosts
// offer them as values to write back.
struct Presentation {
  const char* access;
  const char* ui;
};

Presentation presentation(unsigned int id) {
  const unsigned int number = item_id::index(id);
  if (item_id::group(id) != pic::kSettings) {
    return {.access = "r", .ui = "label"};
  }
  if (id - number == pic::kDefaultView) {
    return {.access = "w", .ui = "label"};
  }
  if (number == pic::kBatteryTypeChoice) {
    return {.access = "rw", .ui = "combobox"};
  }
  return {.access = "rw", .ui = number == pic::kLowVoltageSwitch ? "checkbox" : "textbox"};
}

void make_element(unsigned int id, const void* value, json_t** out) {
  const std::string& name = Device_PIC::device_name_map[id];
  const auto [access, ui] = presentation(id);
  if (item_id::group(id) == pic::kInformation) {
    const auto& text = *static_cast<const std::string*>(value);
    IoTJsonUtility::create_json_element(name, id, text, access, ui, out);
    return;
  }
  const unsigned int raw = *static_cast<const unsigned int*>(value);
  if (is_switch(id)) {
    IoTJsonUtility::create_json_element(name, id, raw != 0, access, ui, out);
  } else if (Device_PIC::is_transfer_volt(id)) {
    IoTJsonUtility::create_json_element(name, id, tenths_to_volts(raw), access, ui, out);
  } else {
    IoTJsonUtility::create_json_element(name, id, static_cast<int>(raw), access, ui, out);
  }
}

}  // namespace

Device_PIC::Device_PIC() {
  if (get_func != nullptr) {
    update_bound_map();
  }
}

Status Device_PIC::get_string_from_map(const StringMap& map, unsigned int id, std::string* out) {
  return catalogue::get_string_from_map(map, id, out);
}

std::string Device_PIC::get_name_by_id(unsigned int id) {
  return catalogue::text_by_id(device_name_map, id);
}

std::string Device_PIC::get_unit_by_id(unsigned int id) {
  return catalogue::text_by_id(unit_map, id);
}

std::string Device_PIC::get_desc_by_id(unsigned int id) {
  return catalogue::text_by_id(desc_map, id);
}

Range Device_PIC::get_range_by_id(unsigned int id) {
  return catalogue::range_by_id(bound_map, id);
}

bool Device_PIC::is_available() {
  return catalogue::is_available(get_func, kova_id_map, pic::kPresence);
}

Status Device_PIC::get_value_by_id(unsigned int id, unsigned int* value) {
  return catalogue::read_raw(get_func, kova_id_map, id, value);
}

void Device_PIC::get_raw_values(unsigned int first, unsigned int end, RawMap* out) {
  catalogue::read_raw_range(get_func, kova_id_map, pic::kPresence, first, end, out);
}

void Device_PIC::update_bound_map_by_id(unsigned int id, double min, double max) {
  catalogue::update_range(bound_map, id, min, max);
}

bool Device_PIC::is_transfer_volt(unsigned int id) {
  return item_id::group(id) == pic::kSettings ? is_voltage_setting(item_id::index(id))
                                              : id == pic::kPowerInput;
}

void Device_PIC::update_bound_map() {
  if (get_func == nullptr) {
    return;
  }
  try {
    for (unsigned int n = 1; n <= pic::kSettingCount; ++n) {
      unsigned int minimum = 0;
      unsigned int maximum = 0;
      const Status minimum_status = get_value_by_id(pic::kMinimumView + n, &minimum);
      const Status maximum_status = get_value_by_id(pic::kMaximumView + n, &maximum);
      if (minimum_status != IOT_STATUS_SUCCESS || maximum_status != IOT_STATUS_SUCCESS) {
        continue;
      }
      const bool volts = is_voltage_setting(n);
      const double min = volts ? tenths_to_volts(minimum) : minimum;
      const double max = volts ? tenths_to_volts(maximum) : maximum;
      for (const unsigned int view : {pic::kDefaultView, pic::kCurrentView, pic::kWriteView}) {
        update_bound_map_by_id(view + n, min, max);
      }
    }
  } catch (...) {
    // Memory ran out: the ranges not yet refreshed keep their defaults, which are good enough to
    // publish, and the controller stays usable.
  }
}

Status Device_PIC::get_info_to_map(StringMap* out) {
  return catalogue::read_texts(get_func, kova_id_map, pic::kPresence, pic::kFirmwareVersion,
                               pic::kBatteryType + 1, info_text, out);
}

Status Device_PIC::get_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  const unsigned int group = item_id::group(id);
  if (group == pic::kInformation) {
    StringMap texts;
    if (const Status status = get_info_to_map(&texts); status != IOT_STATUS_SUCCESS) {
      return status;
    }
    return publish_text(texts, id, value);
  }
  if (group != pic::kSettings && group != pic::kStatus) {
    return IOT_STATUS_UNSUPPORTED;
  }
  unsigned int raw = 0;
  if (const Status status = get_value_by_id(id, &raw); status != IOT_STATUS_SUCCESS) {
    return status;
  }
  if (is_transfer_volt(id)) {
    json_real_set(value, tenths_to_volts(raw));
  } else {
    json_integer_set(value, raw);
  }
  return IOT_STATUS_SUCCESS;
}

Status Device_PIC::set_value_by_id(unsigned int id, json_t* value) {
  if (set_func == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  if (!json_is_number(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  if (item_id::group(id) != pic::kSettings) {
    return IOT_STATUS_UNSUPPORTED;
  }
  const unsigned int number = item_id::index(id);
  const unsigned int code = kova_id_map[pic::kWriteView + number];
  return set_func(code, setting_word(number, value)) == 0 ? IOT_STATUS_SUCCESS
                                                          : IOT_STATUS_WRITE_FAILED;
}

Status Device_PIC::create_json_element(unsigned int id, void* value, json_t** out) {
  return build_element(out, [&] {
    const unsigned int group = item_id::group(id);
    if (group == pic::kInformation || group == pic::kStatus || is_published_setting(id)) {
      make_element(id, value, out);
    }
    const bool offers_choice = id == pic::kCurrentView + pic::kBatteryTypeChoice;
    return end_element(out, {.options = offers_choice ? "0|1|2" : "",
                             .range = get_range_by_id(id),
                             .description = get_desc_by_id(id),
                             .unit = get_unit_by_id(id)});
  });
}

StringMap Device_PIC::get_info_map() {
  info_.clear();
  update_info();
  return info_;
}

RawMap Device_PIC::get_status_map() {
  status_.clear();
  update_status();
  return status_;
}

RawMap Device_PIC::get_defaults_map() {
  defaults_.clear();
  update_defaults();
  return defaults_;
}

RawMap Device_PIC::get_settings_map() {
  settings_.clear();
  update_settings();
  return settings_;
}

void Device_PIC::update_info() {
  get_info_to_map(&info_);
}

void Device_PIC::update_status() {
  get_raw_values(pic::kIgnitionStatus, pic::kStatusEnd, &status_);
}

void Device_PIC::update_defaults() {
  get_raw_values(pic::kDefaultView + 1, pic::kDefaultView + pic::kSettingCount + 1, &defaults_);
}

void Device_PIC::update_settings() {
  get_raw_values(pic::kCurrentView + 1, pic::kCurrentView + pic::kSettingCount + 1, &settings_);
}
