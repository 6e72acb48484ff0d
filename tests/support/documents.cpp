// Reading and comparing documents.
#include "tests/support/documents.h"

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

std::string dump(const json_t* json) {
  char* text = json_dumps(json, JSON_INDENT(1));
  std::string copy(text);
  std::free(text);
  return copy;
}

}  // namespace

JsonOwner load_test_data(const std::string& name) {
  json_error_t error;
  JsonOwner json(json_load_file((std::string(KOVA_TEST_DATA_DIR "/") + name).c_str(), 0, &error));
  if (json == nullptr) {
    throw std::runtime_error(name + ": " + static_cast<const char*>(error.text));
  }
  return json;
}

JsonOwner reference_document() {
  return load_test_data("reference_document.json");
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

void for_each_item(const json_t* json, const std::function<void(std::uint32_t, json_t*)>& visit) {
  const char* key = nullptr;
  json_t* member = nullptr;
  json_object_foreach(const_cast<json_t*>(json), key, member) {
    for_each_item(member, visit);
  }
  size_t index = 0;
  json_t* element = nullptr;
  json_array_foreach(json, index, element) {
    visit(static_cast<std::uint32_t>(json_integer_value(json_object_get(element, "id"))), element);
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
