// Single reads and writes of every family, from the tables of cases in tests/data/items.
//
// A case: "why"; the device's "words", reads that it "fails" (and words these "stores"), writes
// that it "takes" with their statuses, on an empty or the "reference" machine; the item to "get"
// or "set" and the JSON "value" handed in; the "status" (0), what the value then "gives" (itself),
// and the device "calls" in order. Codes and IDs are hexadecimal.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "module/kova_device.h"
#include "tests/support/documents.h"
#include "tests/support/reference_machine.h"
#include "tests/support/wrapped_loader.h"

namespace {

std::uint32_t hexadecimal(const char* text) {
  return static_cast<std::uint32_t>(std::strtoul(text, nullptr, 16));
}

void fill(const json_t* words, std::map<std::uint32_t, std::uint32_t>* table) {
  const char* code = nullptr;
  json_t* word = nullptr;
  json_object_foreach(const_cast<json_t*>(words), code, word) {
    (*table)[hexadecimal(code)] = static_cast<std::uint32_t>(json_integer_value(word));
  }
}

Status status_of(const json_t* name) {
  static const std::map<std::string, Status> names{
      {"NOT_READY", IOT_STATUS_NOT_READY},
      {"NOT_FOUND", IOT_STATUS_NOT_FOUND},
      {"UNSUPPORTED", IOT_STATUS_UNSUPPORTED},
      {"READ_FAILED", IOT_STATUS_READ_FAILED},
      {"WRITE_FAILED", IOT_STATUS_WRITE_FAILED},
      {"INVALID_PARAMETER", IOT_STATUS_INVALID_PARAMETER},
      {"UNDEFINED_ITEM", IOT_STATUS_UNDEFINED_ITEM},
  };
  const char* text = name != nullptr ? json_string_value(name) : "0";
  const auto found = names.find(text);
  return found != names.end() ? found->second : hexadecimal(text);
}

std::string text_of(const json_t* value) {
  char* text = json_dumps(value, JSON_ENCODE_ANY);
  std::string copy = text != nullptr ? text : "nothing";
  std::free(text);
  return copy;
}

void run_case(const json_t* row) {
  const auto column = [row](const char* name) { return json_object_get(row, name); };
  wrapped_loader::install_device_library();
  DeviceDouble device;
  device.lenient = true;  // what the adapters' construction asks is not this test's matter
  KovaDevice manager;
  device.lenient = false;
  device.calls.clear();
  if (json_is_true(column("reference"))) {
    load_reference_machine(&device);
  }
  fill(column("words"), &device.values);
  fill(column("fails"), &device.read_status);
  fill(column("stores"), &device.stored_on_failure);
  fill(column("takes"), &device.write_status);

  const JsonOwner value(json_deep_copy(column("value")));
  const json_t* read_id = column("get");
  const Status status =
      read_id != nullptr
          ? manager.get_value_by_id(hexadecimal(json_string_value(read_id)), value.get())
          : manager.set_value_by_id(hexadecimal(json_string_value(column("set"))), value.get());
  EXPECT_EQ(status, status_of(column("status")));
  EXPECT_EQ(text_of(value.get()),
            text_of(column("gives") != nullptr ? column("gives") : column("value")));
  if (column("calls") != nullptr) {
    std::vector<std::string> calls;
    for (const DeviceDouble::Call& call : device.calls) {
      std::ostringstream text;
      PrintTo(call, &text);
      calls.push_back(text.str());
    }
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < json_array_size(column("calls")); ++i) {
      expected.emplace_back(json_string_value(json_array_get(column("calls"), i)));
    }
    EXPECT_EQ(calls, expected);
  }
}

class ItemCases : public testing::TestWithParam<std::string> {};

TEST_P(ItemCases, AreReadAndWrittenAsTheTableSays) {
  const JsonOwner rows = load_test_data("items/" + GetParam() + ".json");
  std::size_t index = 0;
  json_t* row = nullptr;
  json_array_foreach(rows.get(), index, row) {
    SCOPED_TRACE(json_string_value(json_object_get(row, "why")));
    run_case(row);
  }
  EXPECT_GT(index, 0U);
}

// Each file of the folder is a test.
std::vector<std::string> tables() {
  std::vector<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator(KOVA_TEST_DATA_DIR "/items")) {
    names.push_back(file.path().stem());
  }
  return names;
}

INSTANTIATE_TEST_SUITE_P(Tables, ItemCases, testing::ValuesIn(tables()),
                         [](const auto& table) { return table.param; });

}  // namespace
