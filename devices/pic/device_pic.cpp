// Reads, writes and elements of the power and ignition controller.
#include "devices/pic/device_pic.h"

#include "framework/item_id.h"

namespace {

using catalogue::Row;

// All views of a setting have the shape of its current value; so has what the device knows no
// setting for.
const Row& setting_row(unsigned int id) {
  return *pic::kTable.find(pic::kCurrentView + item_id::index(id));
}

const Row* row_read(unsigned int id) {
  return item_id::group(id) == pic::kSettings ? &setting_row(id) : pic::kTable.find(id);
}

// Of the settings only the current values and the defaults are published.
const Row* row_shown(unsigned int id) {
  const Row* row = pic::kTable.find(id);
  const bool hidden = row != nullptr && item_id::group(id) == pic::kSettings && !is_published(*row);
  return hidden ? nullptr : row;
}

}  // namespace

Device_PIC::Device_PIC() {
  update_bound_map();
}

void Device_PIC::update_bound_map_by_id(unsigned int id, double min, double max) {
  catalogue::update_range(bound_map, id, min, max);
}

bool Device_PIC::is_transfer_volt(unsigned int id) {
  const Row* row = row_read(id);
  return row != nullptr && pic::is_in_tenths_of_a_volt(*row);
}

void Device_PIC::update_bound_map() {
  try {
    for (unsigned int id = pic::kCurrentValues.first; id < pic::kCurrentValues.end; ++id) {
      update_bounds_of(item_id::index(id));
    }
  } catch (...) {
    // Memory ran out: the ranges not yet refreshed keep their defaults, which are good enough to
    // publish, and the controller stays usable.
  }
}

void Device_PIC::update_bounds_of(unsigned int setting) {
  unsigned int minimum = 0;
  unsigned int maximum = 0;
  const Status minimum_status = get_value_by_id(pic::kMinimumView + setting, &minimum);
  const Status maximum_status = get_value_by_id(pic::kMaximumView + setting, &maximum);
  if (minimum_status != IOT_STATUS_SUCCESS || maximum_status != IOT_STATUS_SUCCESS) {
    return;
  }
  const catalogue::Shape& as = setting_row(setting).as;
  for (const unsigned int view : {pic::kDefaultView, pic::kCurrentView, pic::kWriteView}) {
    update_bound_map_by_id(view + setting, real_of(as, minimum), real_of(as, maximum));
  }
}

Status Device_PIC::get_info_to_map(StringMap* out) {
  return read_texts(out);
}

Status Device_PIC::get_value_by_id(unsigned int id, json_t* value) {
  return read_item(row_read(id), id, value);
}

Status Device_PIC::set_value_by_id(unsigned int id, json_t* value) {
  return write_item(&setting_row(id), item_id::group(id) == pic::kSettings,
                    pic::kWriteView + item_id::index(id), value);
}

Status Device_PIC::create_json_element(unsigned int id, void* value, json_t** out) {
  return create_element(row_shown(id), id, value, out);
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
  get_raw_values(pic::kStatusItems, &status_);
}

void Device_PIC::update_defaults() {
  get_raw_values(pic::kDefaults, &defaults_);
}

void Device_PIC::update_settings() {
  get_raw_values(pic::kCurrentValues, &settings_);
}
