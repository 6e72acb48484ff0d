// A host that calls the module in any order with any arguments. The input is lines: "start",
// "stop", "document", "get ID JSON", "set ID JSON" (ID hexadecimal), or "CODE WORD [STATUS]" for
// what the device answers from there on.
#include <charconv>
#include <cmath>

#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "framework/item_id.h"
#include "framework/json_owner.h"
#include "include/kova_iot.h"
#include "tests/fuzz/fuzz_device.h"

namespace {

bool is_documented(uint32_t status) {
  switch (status) {
    case IOT_STATUS_SUCCESS:
    case IOT_STATUS_NOT_READY:
    case IOT_STATUS_NOT_FOUND:
    case IOT_STATUS_UNSUPPORTED:
    case IOT_STATUS_READ_FAILED:
    case IOT_STATUS_WRITE_FAILED:
    case IOT_STATUS_INVALID_PARAMETER:
    case IOT_STATUS_JSON_ERROR:
    case IOT_STATUS_UNDEFINED_ITEM:
      return true;
    default:
      return fuzz_device::has_returned(status);
  }
}

struct Arguments {
  uint32_t id = 0;
  JsonOwner value;

  explicit Arguments(std::string_view text) {
    const std::string_view digits = fuzz_device::take_word(&text);
    std::from_chars(digits.data(), digits.data() + digits.size(), id, 16);
    value.reset(json_loadb(text.data(), text.size(), JSON_DECODE_ANY | JSON_ALLOW_NUL, nullptr));
  }
};

void get(const Arguments& arguments) {
  json_t* value = arguments.value.get();
  const JsonOwner before(json_deep_copy(value));
  const uint32_t status = KovaIoTGetMDValue(arguments.id, value);
  FUZZ_EXPECT(is_documented(status));
  // Accelerometer items fill a scalar and report a failure all the same.
  if (status != IOT_STATUS_SUCCESS && item_id::family(arguments.id) != Device_GSensor::kFamily) {
    FUZZ_EXPECT(value == nullptr || json_equal(value, before.get()) != 0);
  }
  FUZZ_EXPECT(value == nullptr || json_typeof(value) == json_typeof(before.get()));
  FUZZ_EXPECT(std::isfinite(json_real_value(value)));
}

void set(const Arguments& arguments) {
  json_t* value = arguments.value.get();
  const JsonOwner before(json_deep_copy(value));
  FUZZ_EXPECT(is_documented(KovaIoTSetMDValue(arguments.id, value)));
  FUZZ_EXPECT(value == nullptr || json_equal(value, before.get()) != 0);
}

void run(std::string_view line) {
  const std::string_view whole = line;
  const std::string_view call = fuzz_device::take_word(&line);
  if (call == "get") {
    get(Arguments(line));
  } else if (call == "set") {
    set(Arguments(line));
  } else if (call == "start") {
    const uint32_t status = KovaIoTInitialize();
    FUZZ_EXPECT(status == IOT_STATUS_SUCCESS || status == IOT_STATUS_NOT_FOUND);
  } else if (call == "stop") {
    FUZZ_EXPECT(KovaIoTUninitialize() == IOT_STATUS_SUCCESS);
  } else if (call == "document") {
    const JsonOwner target(json_loadb(line.data(), line.size(), JSON_DECODE_ANY, nullptr));
    FUZZ_EXPECT(is_documented(KovaIoTGetMDCapability(target.get())));
  } else {
    fuzz_device::describe(whole);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  fuzz_device::reset();
  while (!text.empty()) {
    run(fuzz_device::take_line(&text));
  }
  KovaIoTUninitialize();
  // Lookups keep an entry for each ID they did not know; an input must not see another's.
  Device_PIC::kova_id_map = Device_PIC::init_kova_id_map();
  Device_GSensor::kova_id_map = Device_GSensor::init_kova_id_map();
  return 0;
}
