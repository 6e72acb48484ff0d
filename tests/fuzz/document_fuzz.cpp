// The whole document over arbitrary device answers. The input is lines "CODE WORD [STATUS]".
#include <cmath>

#include "framework/json_owner.h"
#include "include/kova_iot.h"
#include "tests/fuzz/fuzz_device.h"

namespace {

bool is_text(const json_t* object, const char* key) {
  return json_is_string(json_object_get(object, key));
}

void check_element(const json_t* element) {
  FUZZ_EXPECT(is_text(element, "n") && is_text(element, "asm") && is_text(element, "ui"));
  FUZZ_EXPECT(json_is_integer(json_object_get(element, "id")));
  const json_t* number = json_object_get(element, "v");
  const json_t* flag = json_object_get(element, "bv");
  const json_t* text = json_object_get(element, "sv");
  FUZZ_EXPECT((number != nullptr) + (flag != nullptr) + (text != nullptr) == 1);
  FUZZ_EXPECT(number == nullptr || json_is_number(number));
  FUZZ_EXPECT(std::isfinite(json_number_value(number)));
  FUZZ_EXPECT(flag == nullptr || (json_is_integer(flag) && json_integer_value(flag) >> 1 == 0));
  for (const char* end : {"min", "max"}) {
    FUZZ_EXPECT(std::isfinite(json_number_value(json_object_get(element, end))));
  }
}

void check_package(const json_t* package) {
  FUZZ_EXPECT(is_text(package, "bn") && is_text(package, "bu"));
  FUZZ_EXPECT(json_integer_value(json_object_get(package, "ver")) == 1);
  const json_t* elements = json_object_get(package, "e");
  FUZZ_EXPECT(json_array_size(elements) > 0);
  for (size_t i = 0; i < json_array_size(elements); ++i) {
    check_element(json_array_get(elements, i));
  }
}

void check_document(json_t* document) {
  const char* name = nullptr;
  json_t* family = nullptr;
  json_object_foreach(document, name, family) {
    FUZZ_EXPECT(is_text(family, "bn") && json_object_size(family) > 2);
    const char* key = nullptr;
    json_t* member = nullptr;
    json_object_foreach(family, key, member) {
      if (json_is_object(member)) {
        check_package(member);
      }
    }
  }
  char* text = json_dumps(document, 0);
  FUZZ_EXPECT(text != nullptr);
  const JsonOwner again(json_loads(text, JSON_REJECT_DUPLICATES, nullptr));
  std::free(text);
  FUZZ_EXPECT(json_equal(again.get(), document) != 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  fuzz_device::reset();
  while (!text.empty()) {
    fuzz_device::describe(fuzz_device::take_line(&text));
  }
  // 255 modules take a hundred times longer than two, and tell no more.
  constexpr uint32_t kModuleCount = 0xA00000;
  fuzz_device::limit(kModuleCount, 2);
  const uint32_t started = KovaIoTInitialize();
  FUZZ_EXPECT(started == IOT_STATUS_SUCCESS || started == IOT_STATUS_NOT_FOUND);
  const JsonOwner document(json_object());
  if (KovaIoTGetMDCapability(document.get()) == IOT_STATUS_SUCCESS) {
    check_document(document.get());
  }
  KovaIoTUninitialize();
  return 0;
}
