// Starting the module on the reference machine, and reading as a host does.
#include "tests/faults/faulty_machine.h"

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "tests/support/documents.h"
#include "tests/support/reference_machine.h"
#include "tests/support/wrapped_loader.h"

namespace {

JsonOwner preset_for(const json_t* element) {
  const json_t* number = json_object_get(element, "v");
  if (json_is_real(number)) {
    return JsonOwner(json_real(1e9));
  }
  return JsonOwner(json_object_get(element, "sv") != nullptr ? json_string("untouched")
                                                             : json_integer(-77));
}

}  // namespace

FaultyMachine::FaultyMachine() {
  load_reference_machine(&device);
  device.lenient = true;  // other codes fail, as they do on a machine
  for (const uint32_t code : {0x270000U, 0x420000U, 0x430000U, 0x450000U, 0x680000U, 0x680005U}) {
    device.write_status[code] = 0;
  }
  device.calls.reserve(10'000);  // recording a call takes no memory
  stop();
}

FaultyMachine::~FaultyMachine() {
  KovaIoTUninitialize();
}

void FaultyMachine::stop() {
  KovaIoTUninitialize();
  wrapped_loader::install_device_library();
  wrapped_loader::state().records = false;
  Device_PIC::bound_map = Device_PIC::init_bound_map();
  forget_unknown_items();
  device.calls.clear();
}

void forget_unknown_items() {
  Device_PIC::kova_id_map = Device_PIC::init_kova_id_map();
  Device_TRK7000::kova_id_map = Device_TRK7000::init_kova_id_map();
  Device_GSensor::kova_id_map = Device_GSensor::init_kova_id_map();
}

std::ostream& operator<<(std::ostream& out, const Reading& reading) {
  return out << "status 0x" << std::hex << reading.status << ", value " << reading.value;
}

Reading read_item(uint32_t id, const json_t* preset) {
  const JsonOwner value(json_copy(const_cast<json_t*>(preset)));
  const uint32_t status = KovaIoTGetMDValue(id, value.get());
  return {status, text_of(value.get())};
}

const std::map<uint32_t, JsonOwner>& item_presets() {
  static const auto presets = [] {
    std::map<uint32_t, JsonOwner> all;
    for_each_item(reference_document().get(),
                  [&](uint32_t id, json_t* element) { all[id] = preset_for(element); });
    return all;
  }();
  return presets;
}

JsonOwner host_document() {
  JsonOwner document(json_object());
  if (KovaIoTGetMDCapability(document.get()) != IOT_STATUS_SUCCESS) {
    return nullptr;
  }
  clear_base_times(document.get());
  return document;
}

std::string text_of(const json_t* value) {
  std::string text;
  const auto append = [](const char* buffer, size_t size, void* out) {
    static_cast<std::string*>(out)->append(buffer, size);
    return 0;
  };
  json_dump_callback(value, append, &text, JSON_ENCODE_ANY);
  return text;
}
