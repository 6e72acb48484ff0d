// The smart-battery adapter: the decoder's texts as a map, single values and elements.
#include "devices/sbattery/device_sbattery.h"

#include "devices/sbattery/sbattery_func.h"

Device_SBATTERY::Device_SBATTERY() : decoder_(std::make_unique<SBatteryFunc>(get_func)) {
  init_device_name_map();
  init_device_unit_map();
  init_bound_map();
}

Device_SBATTERY::~Device_SBATTERY() = default;

bool Device_SBATTERY::is_available() const {
  return decoder_->IsAvailable();
}

Status Device_SBATTERY::update_info() {
  Status status = IOT_STATUS_SUCCESS;
  for (const catalogue::Row& row : sheet().rows) {
    status = get_info_to_map_single(&info_, row.id);
  }
  return status;
}

StringMap Device_SBATTERY::get_info_map() {
  info_.clear();
  update_info();
  return info_;
}

Status Device_SBATTERY::get_info_to_map_single(StringMap* map, const unsigned int& id) const {
  return text_item::add_text(items(), decoder_->device(), id, map);
}

Status Device_SBATTERY::get_value_by_id(const unsigned int& id, json_t* value) const {
  return read_item(is_available(), decoder_->device(), id, value);
}
