// Reading the reference machine and its document.
#include "tests/support/reference_machine.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

JsonOwner load(const std::string& name) {
  json_error_t error;
  JsonOwner json(json_load_file((std::string(KOVA_TEST_DATA_DIR "/") + name).c_str(), 0, &error));
  if (json == nullptr) {
    throw std::runtime_error(name + ": " + static_cast<const char*>(error.text));
  }
  return json;
}

}  // namespace

void load_reference_machine(DeviceDouble* device) {
  const JsonOwner machine = load("reference_machine.json");
  const char* code = nullptr;
  json_t* word = nullptr;
  json_object_foreach(json_object_get(machine.get(), "codes"), code, word) {
    device->values[static_cast<std::uint32_t>(std::strtoul(code, nullptr, 16))] =
        static_cast<std::uint32_t>(json_integer_value(word));
  }
}

JsonOwner reference_document() {
  return load("reference_document.json");
}

void clear_base_times(json_t* document) {
  const char* key = nullptr;
  json_t* family = nullptr;
  json_object_foreach(document, key, family) {
    json_t* package = nullptr;
    json_object_foreach(family, key, package) {
      if (json_is_object(package)) {
        json_object_set_new(package, "bt", json_integer(0));
      }
    }
  }
}
