// Reading the reference machine.
#include "tests/support/reference_machine.h"

#include <cstdlib>

#include "tests/support/documents.h"

void load_reference_machine(DeviceDouble* device) {
  const JsonOwner machine = load_test_data("reference_machine.json");
  const char* code = nullptr;
  json_t* word = nullptr;
  json_object_foreach(json_object_get(machine.get(), "codes"), code, word) {
    const auto number = static_cast<std::uint32_t>(std::strtoul(code, nullptr, 16));
    auto& table = json_is_integer(word) ? device->values : device->read_status;
    table[number] = static_cast<std::uint32_t>(
        json_integer_value(json_is_integer(word) ? word : json_object_get(word, "fail_read")));
  }
}
