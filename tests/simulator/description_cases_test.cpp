// Machine descriptions and how their machines answer, from the tables in tests/data/simulator.
//
// A case: "why"; the description as a "machine", or as "text" that JSON could not hold so; the
// "files" it builds on, besides the shipped ones. A refused one: how the "reason" begins. An
// accepted one: the "calls" in order, each with the answer to every repetition: the word read or
// "ok", or "!" and the status, then "/" and the word that a failing read stored. Numbers from
// 65536 on are hexadecimal.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <sstream>

#include "simulator/description.h"
#include "simulator/json_node.h"
#include "tests/support/documents.h"

namespace {

using kova_sim::Machine;
using kova_sim::ParseResult;

std::string text_of(const json_t* json) {
  char* text = json_dumps(json, JSON_ENCODE_ANY);
  std::string copy(text);
  std::free(text);
  return copy;
}

// The row's description, as a file in the folder of the shipped machines.
ParseResult parse_row(const json_t* row) {
  const auto read_file = [row](const std::string& path) {
    const std::string name = std::filesystem::path(path).filename();
    const json_t* described = json_object_get(json_object_get(row, "files"), name.c_str());
    return described != nullptr ? text_of(described) : kova_sim::read_file(path);
  };
  const char* text = json_string_value(json_object_get(row, "text"));
  return kova_sim::parse_description(
      text != nullptr ? text : text_of(json_object_get(row, "machine")), SIMULATOR_MACHINES "m",
      read_file);
}

std::string number(std::uint32_t word) {
  return word < 0x10000 ? std::to_string(word) : kova_sim::format_hex(word);
}

std::string answer(Machine& machine, const std::string& verb, std::int64_t code,
                   std::int64_t value) {
  constexpr std::uint32_t UNTOUCHED = 0xDEAD;
  std::uint32_t word = UNTOUCHED;
  const std::uint32_t status =
      verb == "read" ? machine.read(kova_sim::to_word(code), &word)
                     : machine.write(kova_sim::to_word(code), kova_sim::to_word(value));
  if (status == 0) {
    return verb == "read" ? number(word) : "ok";
  }
  return "!" + number(status) + (word == UNTOUCHED ? "" : "/" + number(word));
}

// Makes the call once for each of its answers, and gives it back with those that came.
std::string make_call(Machine& machine, const std::string& call) {
  std::string made = call.substr(0, call.find(':') + 1);
  std::istringstream expected(call.substr(made.size()));
  std::istringstream words(made);
  std::string verb;
  std::int64_t code = 0;
  std::int64_t value = 0;
  words >> verb >> std::setbase(0) >> code >> value;
  std::string token;
  expected >> token;
  do {  // a call that names no answer is made, too, and stands out
    made += " " + answer(machine, verb, code, value);
  } while (expected >> token);
  return made;
}

void run_case(const json_t* row) {
  ParseResult result = parse_row(row);
  if (const char* reason = json_string_value(json_object_get(row, "reason"))) {
    EXPECT_FALSE(result.machine);
    EXPECT_EQ(result.error.find(std::string(SIMULATOR_MACHINES) + reason), 0U) << result.error;
    EXPECT_EQ(result.error.find('\n'), std::string::npos) << result.error;
    return;
  }
  ASSERT_TRUE(result.machine) << result.error;
  Machine machine(*std::move(result.machine));
  std::size_t index = 0;
  json_t* call = nullptr;
  json_array_foreach(json_object_get(row, "calls"), index, call) {
    EXPECT_EQ(make_call(machine, json_string_value(call)), json_string_value(call));
  }
  EXPECT_GT(index, 0U);
}

class DescriptionCases : public testing::TestWithParam<const char*> {};

TEST_P(DescriptionCases, AreRefusedOrAnswerAsTheTableSays) {
  const JsonOwner rows = load_test_data(std::string("simulator/") + GetParam() + ".json");
  std::size_t index = 0;
  json_t* row = nullptr;
  json_array_foreach(rows.get(), index, row) {
    SCOPED_TRACE(json_string_value(json_object_get(row, "why")));
    run_case(row);
  }
  EXPECT_GT(index, 10U);
}

INSTANTIATE_TEST_SUITE_P(Tables, DescriptionCases, testing::Values("refused", "accepted"));

}  // namespace
