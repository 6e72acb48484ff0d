// The memory-module adapter: the decoder's texts as maps, single values and elements.
#include "devices/sdram/device_sdram.h"

#include "devices/sdram/sdram_func.h"
#include "devices/sdram/sdram_items.h"
#include "framework/item_id.h"
#include "framework/text_item.h"

Device_SDRAM::Device_SDRAM() : decoder_(std::make_unique<SdRamFunc>(get_func)) {}

Device_SDRAM::~Device_SDRAM() = default;

bool Device_SDRAM::is_available() const {
  return decoder_->IsAvailable();
}

unsigned int Device_SDRAM::GetSDRAMCount() const {
  return decoder_->GetRamSocketCount();
}

Status Device_SDRAM::update_info(const unsigned int& module) {
  return get_info_to_map(&info_, module);
}

StringMap Device_SDRAM::get_info_map(const unsigned int& module) {
  info_.clear();
  update_info(module);
  return info_;
}

Status Device_SDRAM::get_info_to_map(StringMap* map, const unsigned int& module) const {
  for (const catalogue::Row& row : sdram::kSheet.rows) {
    get_info_to_map_single(map, module, row.id);
  }
  return IOT_STATUS_SUCCESS;
}

Status Device_SDRAM::get_info_to_map_single(StringMap* map, const unsigned int& module,
                                            const unsigned int& info_id) const {
  return text_item::add_text(sdram::kItems, decoder_->device(module), info_id, map);
}

Status Device_SDRAM::get_value_by_id(unsigned int id, json_t* value) const {
  if (!is_available()) {
    return IOT_STATUS_NOT_READY;
  }
  if (item_id::family(id) != sdram::kFamily) {
    return IOT_STATUS_READ_FAILED;
  }
  // Module number 0 wraps to an index whose low four bits name module 15.
  const unsigned int module = item_id::instance(id) - 1;
  return text_item::read_value(sdram::kItems, decoder_->device(module), id, value);
}

Status Device_SDRAM::create_json_element(unsigned int id, void* data, json_t** out) {
  return text_item::create_element(sdram::kItems, id, static_cast<const std::string*>(data), out);
}

std::string Device_SDRAM::get_name_by_id(unsigned int id) {
  return catalogue::text_by_id(device_name_map, id);
}

std::string Device_SDRAM::get_unit_by_id(unsigned int id) {
  return catalogue::text_by_id(unit_map, id);
}

Range Device_SDRAM::get_range_by_id(const unsigned int& id) {
  return catalogue::range_by_id(bound_map, id);
}

Status Device_SDRAM::get_string_from_map(const StringMap& map, unsigned int id, std::string* out) {
  return catalogue::get_string_from_map(map, id, out);
}
