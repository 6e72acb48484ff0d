// Assembly of the capability document: which packages there are, their names, IDs and order.
//
// A list of JSON values is owned by a JsonList until a package builder takes its references over;
// a builder that was reached has taken them whatever its result.
#include <ctime>
#include <type_traits>
#include <utility>

#include "devices/addon_board/trk7000_items.h"
#include "devices/gsensor/gsensor_items.h"
#include "devices/pic/pic_items.h"
#include "devices/poe/poe_items.h"
#include "framework/iot_json_utility.h"
#include "framework/item_id.h"
#include "module/kova_device.h"

namespace {

constexpr unsigned int kHardwareMonitor = 0x20000;
constexpr unsigned int kHardwareMonitorTemperatures = 0x20100;
constexpr unsigned int kHardwareMonitorFans = 0x20300;
constexpr unsigned int kOnboardFans = 0x14170310;
constexpr int kPackageVersion = 1;

// The module number has eight bits in an item ID. A garbled count must not hang the agent's start.
constexpr unsigned int kMaxMemoryModules = 255;

// A slot is made before the value, so that running out of memory here loses nothing.
template <typename Build>
Status append_built(std::vector<json_t*>* list, const Build& build) {
  list->push_back(nullptr);
  const Status status = build(&list->back());
  if (list->back() == nullptr) {
    list->pop_back();
  }
  return status;
}

// Groups elements, whose references are taken over, into one more IPSO package of `list`.
Status append_elements_to_IPSO_pkgs(std::vector<json_t*>* list, JsonList* elements,
                                    const std::string& bn, const std::string& bu, unsigned int id,
                                    int ver) {
  return append_built(list, [&](json_t** package) {
    const auto base_time = static_cast<unsigned int>(std::time(nullptr));
    const Status status = IoTJsonUtility::create_json_ipso_package(elements->values(), bn, bu,
                                                                   base_time, ver, id, package);
    elements->release();
    return status;
  });
}

Status append_elements_if_any(std::vector<json_t*>* list, JsonList* elements, const std::string& bn,
                              const std::string& bu, unsigned int id) {
  return elements->empty()
             ? IOT_STATUS_JSON_ERROR
             : append_elements_to_IPSO_pkgs(list, elements, bn, bu, id, kPackageVersion);
}

void append_function_package(JsonList* families, JsonList* packages, const std::string& name,
                             unsigned int id) {
  if (packages->empty()) {
    return;
  }
  append_built(families->get(), [&](json_t** family) {
    const Status status =
        IoTJsonUtility::create_json_func_package(packages->values(), name, id, family);
    packages->release();
    return status;
  });
}

JsonList shared_copy(const JsonList& list) {
  std::vector<json_t*> copy = list.values();
  for (json_t* value : copy) {
    json_incref(value);
  }
  return JsonList(std::move(copy));
}

}  // namespace

Status KovaDevice::update_capability() {
  try {
    JsonList families;
    add_sdram(&families);
    add_smart_battery(&families);
    add_addon_board(&families);
    add_poe(&families);
    add_pic(&families);
    add_gsensor(&families);
    json_t* document = nullptr;
    const Status status =
        IoTJsonUtility::create_json_capability_package(families.values(), &document);
    capability_.reset(document);
    return status;
  } catch (...) {
    return IOT_STATUS_NOT_READY;
  }
}

void KovaDevice::add_sdram(JsonList* families) {
  if (!sdram_->is_available()) {
    return;
  }
  JsonList packages;
  for (unsigned int i = 0; i < kMaxMemoryModules && i < sdram_->GetSDRAMCount(); ++i) {
    update_sdram_info_IPSO_pkgs(packages.get(), i);
  }
  append_function_package(families, &packages, "SDRAM", item_id::kSdram);
}

void KovaDevice::add_smart_battery(JsonList* families) {
  if (!sbattery_->is_available()) {
    return;
  }
  JsonList packages;
  update_sbaterry_info_IPSO_pkgs(packages.get());
  append_function_package(families, &packages, "SMART BATTERY", item_id::kSmartBattery);
}

void KovaDevice::add_addon_board(JsonList* families) {
  if (!Device_TRK7000::is_available()) {
    return;
  }
  JsonList packages;
  JsonList monitor_packages;
  update_trk7k_info_IPSO_pkgs(packages.get());
  update_trk7k_fans_IPSO_pkgs(packages.get(), monitor_packages.get());
  update_trk7k_temp_IPSO_pkgs(packages.get(), monitor_packages.get());
  append_function_package(families, &packages, Device_TRK7000::NAME_DEVICE, item_id::kTrk7000);
  append_function_package(families, &monitor_packages, CONST_HWM, kHardwareMonitor);
}

void KovaDevice::add_poe(JsonList* families) {
  if (!Device_PoE::is_available()) {
    return;
  }
  JsonList packages;
  update_poe_IPSO_pkgs(packages.get());
  append_function_package(families, &packages, Device_PoE::NAME_DEVICE, item_id::kPoE);
}

void KovaDevice::add_pic(JsonList* families) {
  if (!Device_PIC::is_available()) {
    return;
  }
  JsonList packages;
  update_pic_info_IPSO_pkgs(packages.get());
  update_pic_defaults_IPSO_pkgs(packages.get());
  update_pic_settings_IPSO_pkgs(packages.get());
  update_pic_real_status_IPSO_pkgs(packages.get());
  append_function_package(families, &packages, Device_PIC::NAME_DEVICE, item_id::kPic);
}

void KovaDevice::add_gsensor(JsonList* families) {
  if (!Device_GSensor::is_available()) {
    return;
  }
  JsonList packages;
  update_gsensor_data_IPSO_pkgs(packages.get());
  update_gsensor_settings_IPSO_pkgs(packages.get());
  append_function_package(families, &packages, Device_GSensor::NAME_DEVICE, item_id::kGSensor);
}

Status KovaDevice::update_sdram_info_IPSO_pkgs(PackageList* list, unsigned int module_index) {
  const unsigned int module_number = module_index + 1;
  return update_IPSO_pkgs(module_number, sdram_->get_info_map(module_index), list,
                          item_id::kSdram + module_number, "SDRAM" + std::to_string(module_index),
                          Device_SDRAM::get_unit_by_id(item_id::kSdram));
}

Status KovaDevice::update_sbaterry_info_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(sbattery_->get_info_map(), list, item_id::kSmartBattery, "SMART BATTERY",
                          Device_SBATTERY::get_unit_by_id(item_id::kSmartBattery));
}

Status KovaDevice::update_trk7k_info_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(trk7000_->get_info_map(), list, trk7000::kInformation,
                          Device_TRK7000::get_name_by_id(trk7000::kInformation));
}

// The name stands on the on-board fans' heading, the unit on the whole group's.
Status KovaDevice::update_trk7k_fans_IPSO_pkgs(PackageList* trk_list, PackageList* hwm_list) {
  const std::string unit = Device_TRK7000::get_unit_by_id(trk7000::kFanSpeeds);
  return update_IPSO_pkgs(trk7000_->get_ob_fans(), trk_list, kOnboardFans,
                          Device_TRK7000::get_name_by_id(kOnboardFans), unit, hwm_list,
                          kHardwareMonitorFans, CONST_FAN, unit);
}

Status KovaDevice::update_trk7k_temp_IPSO_pkgs(PackageList* trk_list, PackageList* hwm_list) {
  const std::string unit = Device_TRK7000::get_unit_by_id(trk7000::kTemperatures);
  return update_IPSO_pkgs(trk7000_->get_temps(), trk_list, trk7000::kTemperatures,
                          Device_TRK7000::get_name_by_id(trk7000::kTemperatures), unit, hwm_list,
                          kHardwareMonitorTemperatures, CONST_TEMP, unit);
}

Status KovaDevice::update_poe_IPSO_pkgs(PackageList* list) {
  if (poe_->port_count() == 0) {
    return IOT_STATUS_NOT_READY;
  }
  const auto power = poe_->get_poe_port_power();
  const auto detects = poe_->get_poe_detects();
  const auto classes = poe_->get_poe_classes();
  const auto voltages = poe_->get_poe_voltages();
  const auto currents = poe_->get_poe_currents();

  Status status = IOT_STATUS_NOT_READY;
  for (unsigned int port = 1; port <= poe_->port_count(); ++port) {
    JsonList elements;
    // A port that could not be read is published as 0: it must not drop out of the document.
    const auto append = [&](const auto& values, unsigned int kind) {
      const auto found = values.find(kind + port);
      typename std::decay_t<decltype(values)>::mapped_type value{};
      if (found != values.end()) {
        value = found->second;
      }
      status = append_json_to_vector(elements.get(), kind + port, &value);
    };
    append(power, poe::kPower);
    append(detects, poe::kDetect);
    append(classes, poe::kClass);
    append(currents, poe::kCurrent);
    append(voltages, poe::kVoltage);
    if (!elements.empty()) {
      status = append_elements_to_IPSO_pkgs(list, &elements,
                                            Device_PoE::NAME_DEVICE + " " + std::to_string(port),
                                            "", item_id::kPoE + port, kPackageVersion);
    }
  }
  return status;
}

Status KovaDevice::update_pic_info_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(pic_->get_info_map(), list, pic::kInformation,
                          Device_PIC::get_name_by_id(pic::kInformation));
}

Status KovaDevice::update_pic_defaults_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(pic_->get_defaults_map(), list, pic::kDefaultView,
                          Device_PIC::get_name_by_id(pic::kDefaultView), "");
}

Status KovaDevice::update_pic_settings_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(pic_->get_settings_map(), list, pic::kCurrentView,
                          Device_PIC::get_name_by_id(pic::kCurrentView), "");
}

Status KovaDevice::update_pic_real_status_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(pic_->get_status_map(), list, pic::kStatus,
                          Device_PIC::get_name_by_id(pic::kStatus), "");
}

Status KovaDevice::update_gsensor_data_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(gsensor_->get_data_map(), list, gsensor::kData,
                          Device_GSensor::get_name_by_id(gsensor::kData),
                          Device_GSensor::get_unit_by_id(gsensor::kData));
}

Status KovaDevice::update_gsensor_settings_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(gsensor_->get_settings_map(), list, gsensor::kSettings,
                          Device_GSensor::get_name_by_id(gsensor::kSettings), "");
}

Status KovaDevice::append_json_to_vector(std::vector<json_t*>* list, unsigned int id, void* data) {
  return append_built(list, [&](json_t** element) {
    Status status = IOT_STATUS_NOT_READY;
    *element = create_json_element_by_id(id, data, &status);
    return status;
  });
}

template <typename Value>
std::vector<json_t*> KovaDevice::create_elements(unsigned int base,
                                                 std::map<unsigned int, Value> values) {
  JsonList elements;
  for (auto& [key, value] : values) {
    append_json_to_vector(elements.get(), base + key, &value);
  }
  return elements.take();
}

std::vector<json_t*> KovaDevice::create_json_elements_v(RawMap values) {
  return create_elements(0, std::move(values));
}

std::vector<json_t*> KovaDevice::create_json_elements_v(StringMap texts) {
  return create_elements(0, std::move(texts));
}

std::vector<json_t*> KovaDevice::create_json_elements_v(unsigned int base, StringMap texts) {
  return create_elements(base, std::move(texts));
}

Status KovaDevice::update_IPSO_pkgs(RawMap values, PackageList* list, unsigned int id,
                                    const std::string& bn, const std::string& bu) {
  if (values.empty()) {
    return IOT_STATUS_READ_FAILED;
  }
  JsonList elements(create_json_elements_v(std::move(values)));
  return append_elements_if_any(list, &elements, bn, bu, id);
}

Status KovaDevice::update_IPSO_pkgs(RawMap values, PackageList* list, unsigned int id,
                                    const std::string& bn, const std::string& bu,
                                    PackageList* second_list, unsigned int second_id,
                                    const std::string& second_bn, const std::string& second_bu) {
  if (values.empty()) {
    return IOT_STATUS_READ_FAILED;
  }
  JsonList elements(create_json_elements_v(std::move(values)));
  // The same elements stand in both packages, each of which holds references of its own.
  JsonList shared = shared_copy(elements);
  Status status = append_elements_if_any(list, &elements, bn, bu, id);
  if (second_list != nullptr) {
    status |= append_elements_if_any(second_list, &shared, second_bn, second_bu, second_id);
  }
  return status;
}

Status KovaDevice::update_IPSO_pkgs(StringMap texts, PackageList* list, unsigned int id,
                                    const std::string& bn, const std::string& bu) {
  if (texts.empty()) {
    return IOT_STATUS_READ_FAILED;
  }
  JsonList elements(create_json_elements_v(std::move(texts)));
  return append_elements_if_any(list, &elements, bn, bu, id);
}

Status KovaDevice::update_IPSO_pkgs(unsigned int base, StringMap texts, PackageList* list,
                                    unsigned int id, const std::string& bn, const std::string& bu) {
  if (texts.empty()) {
    return IOT_STATUS_READ_FAILED;
  }
  JsonList elements(create_json_elements_v(base, std::move(texts)));
  return append_elements_if_any(list, &elements, bn, bu, id);
}
