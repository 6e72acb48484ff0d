// The manager's start, its routing and the creation of single elements.
#include "module/kova_device.h"

#include "framework/device_library.h"
#include "framework/item_id.h"
#include "framework/load_time.h"

const std::string KovaDevice::CONST_HWM =
    load_time::build(+[] { return std::string("Hardware Monitor"); });
const std::string KovaDevice::CONST_TEMP = "Temperature";
const std::string KovaDevice::CONST_FAN = "Fan Speed";

KovaDevice::KovaDevice() : library_(LibLoad("libKOVADevice")) {
  if (library_ != nullptr) {
    get_entry_ = reinterpret_cast<ReadEntry>(LibGetSymbol(library_, "KovaDeviceGetValue"));
    if (get_entry_ != nullptr) {
      Device_TRK7000::get_func = get_entry_;
      Device_PoE::get_func = get_entry_;
      Device_PIC::get_func = get_entry_;
      Device_GSensor::get_func = get_entry_;
      Device_SDRAM::get_func = get_entry_;
      Device_SBATTERY::get_func = get_entry_;
    }
    set_entry_ = reinterpret_cast<WriteEntry>(LibGetSymbol(library_, "KovaDeviceSetValue"));
    if (set_entry_ != nullptr) {
      Device_PoE::set_func = set_entry_;
      Device_PIC::set_func = set_entry_;
      Device_GSensor::set_func = set_entry_;
    }
  }
  // Constructors read the device, so their order is the order of the first device calls.
  poe_ = std::make_unique<Device_PoE>();
  trk7000_ = std::make_unique<Device_TRK7000>();
  pic_ = std::make_unique<Device_PIC>();
  gsensor_ = std::make_unique<Device_GSensor>();
  sdram_ = std::make_unique<Device_SDRAM>();
  sbattery_ = std::make_unique<Device_SBATTERY>();
}

bool KovaDevice::is_available() {
  return get_entry_ != nullptr && (sdram_->is_available() || Device_TRK7000::is_available() ||
                                   sbattery_->is_available() || Device_PoE::is_available() ||
                                   Device_PIC::is_available() || Device_GSensor::is_available());
}

Status KovaDevice::get_value_by_id(unsigned int id, json_t* value) {
  switch (item_id::family(id)) {
    case item_id::kPoE:
      return Device_PoE::get_value_by_id(id, value);
    case item_id::kGSensor:
      return Device_GSensor::get_value_by_id(id, value);
    case item_id::kPic:
      return Device_PIC::get_value_by_id(id, value);
    case item_id::kTrk7000:
      return Device_TRK7000::get_value_by_id(id, value);
    case item_id::kSdram:
      return sdram_->get_value_by_id(id, value);
    case item_id::kSmartBattery:
      return sbattery_->get_value_by_id(id, value);
    default:
      return IOT_STATUS_UNSUPPORTED;
  }
}

Status KovaDevice::set_value_by_id(unsigned int id, json_t* value) {
  if (set_entry_ == nullptr || get_entry_ == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  if (!json_is_number(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  switch (item_id::family(id)) {
    case item_id::kGSensor:
      return Device_GSensor::set_value_by_id(id, value);
    case item_id::kPic:
      return Device_PIC::set_value_by_id(id, value);
    case item_id::kPoE:
      return Device_PoE::set_value_by_id(id, value);
    default:
      return IOT_STATUS_UNSUPPORTED;
  }
}

json_t* KovaDevice::create_json_element_by_id(unsigned int id, void* data, unsigned int* status) {
  json_t* element = nullptr;
  switch (item_id::family(id)) {
    case item_id::kTrk7000:
      *status = Device_TRK7000::create_json_element(id, data, &element);
      break;
    case item_id::kPoE:
      *status = Device_PoE::create_json_element(id, data, &element);
      break;
    case item_id::kSdram:
      *status = Device_SDRAM::create_json_element(id, data, &element);
      break;
    case item_id::kSmartBattery:
      *status = Device_SBATTERY::create_json_element(id, data, &element);
      break;
    case item_id::kGSensor:
      *status = Device_GSensor::create_json_element(id, data, &element);
      break;
    case item_id::kPic:
      *status = Device_PIC::create_json_element(id, data, &element);
      break;
    default:
      *status = IOT_STATUS_UNSUPPORTED;
      break;
  }
  return element;
}

json_t* KovaDevice::get_capability(unsigned int* status) {
  *status = update_capability();
  return capability();
}
