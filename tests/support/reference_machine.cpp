// Reading the reference machine and its document.
#include "tests/support/reference_machine.h"

#include <cstdlib>
#include <sstream>
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

std::string dump(const json_t* json) {
  char* text = json_dumps(json, JSON_INDENT(1));
  std::string copy(text);
  std::free(text);
  return copy;
}

}  // namespace

void load_reference_machine(DeviceDouble* device) {
  const JsonOwner machine = load("reference_machine.json");
  const char* code = nullptr;
  json_t* word = nullptr;
  json_object_foreach(json_object_get(machine.get(), "codes"), code, word) {
    const auto number = static_cast<std::uint32_t>(std::strtoul(code, nullptr, 16));
    auto& table = json_is_integer(word) ? device->values : device->read_status;
    table[number] = static_cast<std::uint32_t>(
        json_integer_value(json_is_integer(word) ? word : json_object_get(word, "fail_read")));
  }
}

JsonOwner reference_document() {
  return load("reference_document.json");
}

void clear_base_times(json_t* document) {
  const char* family_name = nullptr;
  json_t* family = nullptr;
  json_object_foreach(document, family_name, family) {
    const char* key = nullptr;
    json_t* package = nullptr;
    json_object_foreach(family, key, package) {
      if (json_is_object(package)) {
        json_object_set_new(package, "bt", json_integer(0));
      }
    }
  }
}

std::string first_difference(const json_t* made, const json_t* expected) {
  std::istringstream made_lines(dump(made));
  std::istringstream expected_lines(dump(expected));
  std::string before;
  std::string made_line;
  std::string expected_line;
  while (true) {
    const bool made_more = static_cast<bool>(std::getline(made_lines, made_line));
    const bool expected_more = static_cast<bool>(std::getline(expected_lines, expected_line));
    if (!made_more && !expected_more) {
      return "";
    }
    if (made_more != expected_more || made_line != expected_line) {
      return "after " + before + ": made " + made_line + ", expected " + expected_line;
    }
    before = made_line;
  }
}
