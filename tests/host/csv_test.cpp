// Listings as comma-separated values.
#include "tools/host/export/csv.h"

#include <gtest/gtest.h>

#include "tests/host/items.h"
#include "tests/support/comma_locale.h"

namespace kova_host {
namespace {

JsonPtr listing(const char* text) {
  return own(json_loads(text, JSON_REJECT_DUPLICATES, nullptr));
}

TEST(Csv, CellsAreWhatTheKeysSay) {
  const CommaLocale comma;
  const JsonPtr document = listing(R"({"items": [
    {"id": "a", "value": 10.0, "unit": "V", "ok": true},
    {"id": "b", "value": 1234567890.12345, "in_range": false, "options": [1]},
    {"id": "c", "value": "say \"a,b\"   ", "unit": null},
    {"id": "d", "value": "\u001b[1m\r\n\u202e", "code": 4294967295},
    {"id": "e", "value": null, "label": "", "unit": "°C"}],
    "findings": [{"id": "b", "rule": "hot"}, {"id": "x", "rule": "cold"}, {"id": "b", "rule": "old"}]})");
  EXPECT_EQ(
      csv_table(document.get(), {"value", "id", "unit", "ok", "in_range", "code", "findings"}),
      "value,id,unit,ok,in_range,code,findings\r\n"
      "10,a,V,true,,,\r\n"
      "1234567890.12345,b,,,false,,hot old\r\n"
      "\"say \"\"a,b\"\"\",c,,,,,\r\n"
      "\\x1b[1m\\x0d\\x0a\\u202e,d,,,,4294967295,\r\n"
      ",e,°C,,,,\r\n");
  EXPECT_EQ(csv_table(listing("{\"items\": []}").get(), {"id"}), "id\r\n");
}

TEST(Csv, RowsAreInTheOrderOfAField) {
  const std::pair<const char*, const char*> cases[] = {{"value", "f a c d b e "},
                                                       {"id", "a b c d e f "},
                                                       {"code", "c a b d e f "},
                                                       {"findings", "c b a d e f "}};
  for (const auto& [field, order] : cases) {
    const JsonPtr document = listing(R"({"items": [
      {"id": "a", "value": 10, "code": 2}, {"id": "b", "value": "z"}, {"id": "c", "value": 10.0, "code": 1},
      {"id": "d", "value": "y"}, {"id": "e", "value": null}, {"id": "f", "value": 9.5}],
      "findings": [{"id": "b", "rule": "warm"}, {"id": "c", "rule": "cold"}]})");
    sort_list(document.get(), field);
    std::string ids;
    for (size_t i = 0; i < 6; ++i) {
      ids += text_at(json_array_get(json_object_get(document.get(), "items"), i), "id") + " ";
    }
    EXPECT_EQ(ids, order) << field;
  }
}

TEST(Csv, FieldsAreThoseThatThereAre) {
  EXPECT_EQ(parse_csv_fields("unit,id"), (std::vector<std::string>{"unit", "id"}));
  const std::pair<const char*, const char*> cases[] = {
      {"id,pth", "no field 'pth': did you mean 'path'?"},
      {"id,", "no field ''; there are id, path, "},
      {"", "no field ''; there are id, path, "},
      {"id,unit,id", "the field 'id' is named twice"},
      {"ID", "no field 'ID': did you mean 'id'?"}};
  for (const auto& [list, message] : cases) {
    const std::string text = refusal([fields = list] { parse_csv_fields(fields); });
    EXPECT_TRUE(text.starts_with(message)) << text;
  }
}

}  // namespace
}  // namespace kova_host
