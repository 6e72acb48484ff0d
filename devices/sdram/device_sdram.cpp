// The memory-module adapter: the decoder's texts as maps, single values and elements.
#include "devices/sdram/device_sdram.h"

#include "devices/sdram/sdram_func.h"
#include "framework/item_id.h"

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
  for (const catalogue::Row& row : sheet().rows) {
    get_info_to_map_single(map, module, row.id);
  }
  return IOT_STATUS_SUCCESS;
}

Status Device_SDRAM::get_info_to_map_single(StringMap* map, const unsigned int& module,
                                            const unsigned int& info_id) const {
  return text_item::add_text(items(), decoder_->device(module), info_id, map);
}

Status Device_SDRAM::get_value_by_id(unsigned int id, json_t* value) const {
  // Module number 0 wraps to an index whose low four bits name module 15.
  return read_item(is_available(), decoder_->device(item_id::instance(id) - 1), id, value);
}
