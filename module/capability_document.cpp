// Assembly of the capability document: which packages there are, their names, IDs and order.
//
// A list of JSON values is owned by a JsonList until a package builder takes its references over;
// a builder that was reached has taken them whatever its result.
#include <algorithm>
#include <ctime>
#include <string_view>
#include <type_traits>
#include <utility>

#include "framework/iot_json_utility.h"
#include "module/kova_device.h"

namespace {

constexpr int kPackageVersion = 1;

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

// What the sheet says of a heading's package.
const catalogue::Package& package_of(const catalogue::Sheet& sheet, unsigned int heading) {
  static constexpr catalogue::Package kPlain{.id = 0};
  const auto found = std::ranges::find(sheet.packages, heading, &catalogue::Package::id);
  return found == sheet.packages.end() ? kPlain : *found;
}

// The package's "bu". A package without one asks for none: what IDs are units of is the families'.
template <typename Device>
std::string base_unit_of(const catalogue::Package& package) {
  return package.unit_id != 0 ? Device::get_unit_by_id(package.unit_id) : "";
}

template <typename Device>
std::string family_name() {
  if constexpr (requires { Device::NAME_DEVICE; }) {
    return Device::NAME_DEVICE;
  } else {
    return std::string(Device::sheet().name);
  }
}

JsonList shared_copy(const JsonList& list) {
  std::vector<json_t*> copy = list.values();
  for (json_t* value : copy) {
    json_incref(value);
  }
  return JsonList(std::move(copy));
}

}  // namespace

template <typename Device, typename Values>
Status KovaDevice::update_group(unsigned int heading, Values values, PackageList* list) {
  return update_IPSO_pkgs(std::move(values), list, heading, Device::get_name_by_id(heading),
                          base_unit_of<Device>(package_of(Device::sheet(), heading)));
}

Status KovaDevice::update_board_group(unsigned int heading, RawMap values, PackageList* trk_list,
                                      PackageList* hwm_list, const std::string& hwm_name) {
  const catalogue::Package& package = package_of(trk7000::kSheet, heading);
  const std::string unit = base_unit_of<Device_TRK7000>(package);
  return update_IPSO_pkgs(std::move(values), trk_list, heading,
                          Device_TRK7000::get_name_by_id(heading), unit, hwm_list,
                          package.second_id, hwm_name, unit);
}

Status KovaDevice::update_sdram_info_IPSO_pkgs(PackageList* list, unsigned int module_index) {
  const unsigned int module_number = module_index + 1;
  return update_IPSO_pkgs(module_number, adapter<Device_SDRAM>().get_info_map(module_index), list,
                          sdram::kFamily + module_number,
                          family_name<Device_SDRAM>() + std::to_string(module_index),
                          Device_SDRAM::get_unit_by_id(sdram::kFamily));
}

Status KovaDevice::update_sbaterry_info_IPSO_pkgs(PackageList* list) {
  return update_IPSO_pkgs(adapter<Device_SBATTERY>().get_info_map(), list, sbattery::kFamily,
                          family_name<Device_SBATTERY>(),
                          Device_SBATTERY::get_unit_by_id(sbattery::kFamily));
}

Status KovaDevice::update_trk7k_info_IPSO_pkgs(PackageList* list) {
  return update_group<Device_TRK7000>(trk7000::kInformation,
                                      adapter<Device_TRK7000>().get_info_map(), list);
}

Status KovaDevice::update_trk7k_fans_IPSO_pkgs(PackageList* trk_list, PackageList* hwm_list) {
  return update_board_group(trk7000::kOnboardFans, adapter<Device_TRK7000>().get_ob_fans(),
                            trk_list, hwm_list, CONST_FAN);
}

Status KovaDevice::update_trk7k_temp_IPSO_pkgs(PackageList* trk_list, PackageList* hwm_list) {
  return update_board_group(trk7000::kTemperatures, adapter<Device_TRK7000>().get_temps(), trk_list,
                            hwm_list, CONST_TEMP);
}

Status KovaDevice::update_poe_IPSO_pkgs(PackageList* list) {
  Device_PoE& ports = adapter<Device_PoE>();
  if (ports.port_count() == 0) {
    return IOT_STATUS_NOT_READY;
  }
  const auto power = ports.get_poe_port_power();
  const auto detects = ports.get_poe_detects();
  const auto classes = ports.get_poe_classes();
  const auto voltages = ports.get_poe_voltages();
  const auto currents = ports.get_poe_currents();

  Status status = IOT_STATUS_NOT_READY;
  for (unsigned int port = 1; port <= ports.port_count(); ++port) {
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
                                            "", poe::kFamily + port, kPackageVersion);
    }
  }
  return status;
}

Status KovaDevice::update_pic_info_IPSO_pkgs(PackageList* list) {
  return update_group<Device_PIC>(pic::kInformation, adapter<Device_PIC>().get_info_map(), list);
}

Status KovaDevice::update_pic_defaults_IPSO_pkgs(PackageList* list) {
  return update_group<Device_PIC>(pic::kDefaultView, adapter<Device_PIC>().get_defaults_map(),
                                  list);
}

Status KovaDevice::update_pic_settings_IPSO_pkgs(PackageList* list) {
  return update_group<Device_PIC>(pic::kCurrentView, adapter<Device_PIC>().get_settings_map(),
                                  list);
}

Status KovaDevice::update_pic_real_status_IPSO_pkgs(PackageList* list) {
  return update_group<Device_PIC>(pic::kStatus, adapter<Device_PIC>().get_status_map(), list);
}

Status KovaDevice::update_gsensor_data_IPSO_pkgs(PackageList* list) {
  return update_group<Device_GSensor>(gsensor::kData, adapter<Device_GSensor>().get_data_map(),
                                      list);
}

Status KovaDevice::update_gsensor_settings_IPSO_pkgs(PackageList* list) {
  return update_group<Device_GSensor>(gsensor::kSettings,
                                      adapter<Device_GSensor>().get_settings_map(), list);
}

template <typename Device>
void KovaDevice::update_packages(PackageList* /*list*/, PackageList* /*hwm_list*/) {
  static_assert(sizeof(Device) == 0, "a family whose packages are not told below");
}

template <>
void KovaDevice::update_packages<Device_SDRAM>(PackageList* list, PackageList* /*hwm_list*/) {
  // The count is asked before every module; a garbled one must not hang the agent's start.
  const Device_SDRAM& modules = adapter<Device_SDRAM>();
  for (unsigned int i = 0; i < modules.GetSDRAMCount() && i < sdram::kSheet.instances->max; ++i) {
    update_sdram_info_IPSO_pkgs(list, i);
  }
}

template <>
void KovaDevice::update_packages<Device_SBATTERY>(PackageList* list, PackageList* /*hwm_list*/) {
  update_sbaterry_info_IPSO_pkgs(list);
}

template <>
void KovaDevice::update_packages<Device_TRK7000>(PackageList* list, PackageList* hwm_list) {
  update_trk7k_info_IPSO_pkgs(list);
  update_trk7k_fans_IPSO_pkgs(list, hwm_list);
  update_trk7k_temp_IPSO_pkgs(list, hwm_list);
}

template <>
void KovaDevice::update_packages<Device_PoE>(PackageList* list, PackageList* /*hwm_list*/) {
  update_poe_IPSO_pkgs(list);
}

template <>
void KovaDevice::update_packages<Device_PIC>(PackageList* list, PackageList* /*hwm_list*/) {
  update_pic_info_IPSO_pkgs(list);
  update_pic_defaults_IPSO_pkgs(list);
  update_pic_settings_IPSO_pkgs(list);
  update_pic_real_status_IPSO_pkgs(list);
}

template <>
void KovaDevice::update_packages<Device_GSensor>(PackageList* list, PackageList* /*hwm_list*/) {
  update_gsensor_data_IPSO_pkgs(list);
  update_gsensor_settings_IPSO_pkgs(list);
}

template <typename Device>
void KovaDevice::add_family(JsonList* families) {
  if (!adapter<Device>().is_available()) {
    return;
  }
  const catalogue::Sheet& sheet = Device::sheet();
  JsonList packages;
  JsonList hwm_packages;
  update_packages<Device>(packages.get(), hwm_packages.get());
  append_function_package(families, &packages, family_name<Device>(), sheet.id);
  append_function_package(families, &hwm_packages, CONST_HWM, sheet.second_family_id);
}

Status KovaDevice::update_capability() {
  try {
    JsonList list;
    families::visit_all([&](const auto& family) {
      add_family<typename std::decay_t<decltype(family)>::Adapter>(&list);
    });
    if (list.empty()) {
      return IOT_STATUS_JSON_ERROR;
    }
    json_t* document = nullptr;
    const Status status = IoTJsonUtility::create_json_capability_package(list.values(), &document);
    capability_.reset(document);
    return status;
  } catch (...) {
    return IOT_STATUS_NOT_READY;
  }
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
