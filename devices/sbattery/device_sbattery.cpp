// The smart-battery adapter: the decoder's texts as a map, single values and elements.
#include "devices/sbattery/device_sbattery.h"

#include "devices/sbattery/sbattery_func.h"
#include "devices/sbattery/sbattery_items.h"
#include "framework/item_id.h"
#include "framework/text_item.h"

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
  for (const catalogue::Row& row : sbattery::kSheet.rows) {
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
  return text_item::add_text(sbattery::kItems, decoder_->device(), id, map);
}

Status Device_SBATTERY::get_value_by_id(const unsigned int& id, json_t* value) const {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  if (item_id::family(id) != sbattery::kFamily) {
    return IOT_STATUS_READ_FAILED;
  }
  return text_item::read_value(sbattery::kItems, decoder_->device(), id, value);
}

Status Device_SBATTERY::create_json_element(const unsigned int& id, void* data, json_t** out) {
  return text_item::create_element(sbattery::kItems, id, static_cast<const std::string*>(data),
                                   out);
}

std::string Device_SBATTERY::get_name_by_id(const unsigned int& id) {
  return catalogue::text_by_id(device_name_map, id);
}

std::string Device_SBATTERY::get_unit_by_id(const unsigned int& id) {
  return catalogue::text_by_id(unit_map, id);
}

Range Device_SBATTERY::get_range_by_id(const unsigned int& id) {
  return catalogue::range_by_id(bound_map, id);
}

Status Device_SBATTERY::get_string_from_map(const StringMap& map, unsigned int id,
                                            std::string* out) {
  return catalogue::get_string_from_map(map, id, out);
}
