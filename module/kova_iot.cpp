// The seven entry points: the exception barrier, the one manager, and nothing else.
#include "include/kova_iot.h"

#include <memory>

#include "framework/load_time.h"
#include "module/kova_device.h"

namespace {

// Tells a reader of the file which release it is; nothing in the process looks at it.
[[gnu::used]] const char kReleaseMark[] = "KOVA-IOT-RELEASE " KOVA_IOT_VERSION;

// The single manager. It is left alone at unload: a host that exits without a shutdown, perhaps
// while another thread still waits for the device, must not have it pulled away.
KovaDevice* kova_dev = nullptr;

void discard_manager() {
  delete kova_dev;
  kova_dev = nullptr;
}

// No exception may reach the host, which need not even be C++.
template <typename Call>
uint32_t guarded(const Call& call) noexcept {
  try {
    return call();
  } catch (...) {
    return IOT_STATUS_NOT_READY;
  }
}

}  // namespace

// The status of assembling the document is deliberately not the result: a machine whose document
// lacks a group, or is missing, can still be read and written.
uint32_t KovaIoTInitialize(void) {
  discard_manager();
  return guarded([]() -> uint32_t {
    if (load_time::failed()) {
      return IOT_STATUS_NOT_READY;
    }
    auto manager = std::make_unique<KovaDevice>();
    if (!manager->is_available()) {
      return IOT_STATUS_NOT_FOUND;
    }
    uint32_t document_status = IOT_STATUS_NOT_READY;
    manager->get_capability(&document_status);
    kova_dev = manager.release();
    return IOT_STATUS_SUCCESS;
  });
}

uint32_t KovaIoTUninitialize(void) {
  discard_manager();
  return IOT_STATUS_SUCCESS;
}

uint32_t KovaIoTGetMDCapability(json_t* target) {
  json_t* document = kova_dev != nullptr ? kova_dev->capability() : nullptr;
  return json_object_update(target, document) == 0 ? IOT_STATUS_SUCCESS : IOT_STATUS_NOT_READY;
}

uint32_t KovaIoTGetMDValue(uint32_t id, json_t* value) {
  return guarded([=] {
    return kova_dev != nullptr ? kova_dev->get_value_by_id(id, value) : IOT_STATUS_NOT_READY;
  });
}

uint32_t KovaIoTSetMDValue(uint32_t id, json_t* value) {
  return guarded([=] {
    return kova_dev != nullptr ? kova_dev->set_value_by_id(id, value) : IOT_STATUS_NOT_READY;
  });
}

uint32_t KovaIoTSetMDEventHandler(KovaIoTEventHandler /*handler*/) {
  return IOT_STATUS_SUCCESS;
}

uint32_t KovaIoTGetModuleID(void) {
  return KOVA_IOT_MODULE_ID;
}
