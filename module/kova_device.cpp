// The manager's start, its routing and the creation of single elements.
#include "module/kova_device.h"

#include <algorithm>

#include "framework/device_library.h"
#include "framework/iot_json_utility.h"
#include "framework/item_id.h"
#include "framework/load_time.h"

namespace {

template <typename Known>
using AdapterOf = typename std::decay_t<Known>::Adapter;

// What the board's sheet calls a group in the second family.
std::string second_name_of(unsigned int heading) {
  const auto package =
      std::ranges::find(trk7000::kSheet.packages, heading, &catalogue::Package::id);
  return std::string(package->second_name);
}

constexpr int kPlace = load_time::place(1);

}  // namespace

[[gnu::init_priority(kPlace)]] const std::string KovaDevice::CONST_HWM =
    load_time::build(+[] { return std::string(trk7000::kSheet.second_family); });
[[gnu::init_priority(kPlace)]] const std::string KovaDevice::CONST_TEMP =
    load_time::build(+[] { return second_name_of(trk7000::kTemperatures); });
[[gnu::init_priority(kPlace)]] const std::string KovaDevice::CONST_FAN =
    load_time::build(+[] { return second_name_of(trk7000::kOnboardFans); });

KovaDevice::KovaDevice() : library_(LibLoad("libKOVADevice")) {
  if (library_ != nullptr) {
    get_entry_ = reinterpret_cast<ReadEntry>(LibGetSymbol(library_, "KovaDeviceGetValue"));
    if (get_entry_ != nullptr) {
      families::hand_out(get_entry_);
    }
    set_entry_ = reinterpret_cast<WriteEntry>(LibGetSymbol(library_, "KovaDeviceSetValue"));
    if (set_entry_ != nullptr) {
      families::hand_out(set_entry_);
    }
  }
  families::visit_by(families::kStart, [this](const auto& family) {
    using Device = AdapterOf<decltype(family)>;
    std::get<std::unique_ptr<Device>>(adapters_) = std::make_unique<Device>();
  });
}

KovaDevice::~KovaDevice() {
  json_t* document = capability_.release();
  IoTJsonUtility::free_json_obj(&document);
}

bool KovaDevice::is_available() {
  bool available = false;
  families::visit_by(families::kProbe, [&](const auto& family) {
    available = get_entry_ != nullptr &&
                (available || adapter<AdapterOf<decltype(family)>>().is_available());
  });
  return available;
}

template <typename Call>
Status KovaDevice::route(unsigned int id, const Call& call) {
  Status status = IOT_STATUS_UNSUPPORTED;
  families::any_of([&](const auto& family) {
    using Device = AdapterOf<decltype(family)>;
    const bool is_its = item_id::family(id) == Device::kFamily;
    if (is_its) {
      status = call(adapter<Device>());
    }
    return is_its;
  });
  return status;
}

Status KovaDevice::get_value_by_id(unsigned int id, json_t* value) {
  return route(id, [=](auto& device) { return device.get_value_by_id(id, value); });
}

Status KovaDevice::set_value_by_id(unsigned int id, json_t* value) {
  if (set_entry_ == nullptr || get_entry_ == nullptr) {
    return IOT_STATUS_NOT_READY;
  }
  if (!json_is_number(value)) {
    return IOT_STATUS_INVALID_PARAMETER;
  }
  return route(id, [=](auto& device) -> Status {
    if constexpr (requires { device.set_value_by_id(id, value); }) {
      return device.set_value_by_id(id, value);
    } else {
      return IOT_STATUS_UNSUPPORTED;
    }
  });
}

json_t* KovaDevice::create_json_element_by_id(unsigned int id, void* data, unsigned int* status) {
  json_t* element = nullptr;
  *status = route(id, [&](auto& device) { return device.create_json_element(id, data, &element); });
  return element;
}

json_t* KovaDevice::get_capability(unsigned int* status) {
  *status = update_capability();
  return capability();
}
