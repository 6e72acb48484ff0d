// Reads and elements of the add-on board.
#include "devices/addon_board/device_trk7000.h"

Status Device_TRK7000::get_info_to_map(StringMap* out) {
  return read_texts(out);
}

Status Device_TRK7000::get_value_by_id(unsigned int id, json_t* value) {
  return read_item(trk7000::kTable.find(id), id, value);
}

Status Device_TRK7000::create_json_element(unsigned int id, void* value, json_t** out) {
  return create_element(trk7000::kTable.find(id), id, value, out);
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
  get_raw_values(trk7000::kVtin, &vtin_values_);
  get_raw_values(trk7000::kBt, &bt_values_);
}

void Device_TRK7000::update_ob_fans() {
  get_raw_values(trk7000::kFans, &ob_fan_values_);
}

Status Device_TRK7000::update_info() {
  return get_info_to_map(&info_values_);
}
