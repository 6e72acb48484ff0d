// Reads, writes and elements of the accelerometer.
#include "devices/gsensor/device_gsensor.h"

#include "framework/item_id.h"

Status Device_GSensor::get_value_by_id(unsigned int id, json_t* value) {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  const Status status = read_number(gsensor::kTable.find(id), id, value);
  const bool is_filled = json_is_object(value) && json_object_size(value) != 0;
  return status == IOT_STATUS_SUCCESS && !is_filled ? IOT_STATUS_READ_FAILED : status;
}

Status Device_GSensor::set_value_by_id(unsigned int id, json_t* value) {
  return write_item(gsensor::kTable.find(id), item_id::group(id) == gsensor::kSettings, id, value);
}

Status Device_GSensor::create_json_element(unsigned int id, void* raw, json_t** out) {
  return create_element(gsensor::kTable.find(id), id, raw, out);
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
  get_raw_values(gsensor::kModes, &mode_values_);
  get_raw_values(gsensor::kOffsets, &offset_values_);
  get_raw_values(gsensor::kRates, &rate_values_);
  get_raw_values(gsensor::kRanges, &range_values_);
}

void Device_GSensor::update_data() {
  get_raw_values(gsensor::kReadings, &data_values_);
}
