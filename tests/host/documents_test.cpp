// Documents that the host library reads: capability documents, items.json, outputs of list --json.
#include <gtest/gtest.h>

#include "tests/host/items.h"
#include "tools/host/export/json_report.h"
#include "tools/host/model/capability_document.h"
#include "tools/host/model/item_data.h"
#include "tools/host/record/listing_file.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/values/shown_value.h"

namespace kova_host {
namespace {

JsonPtr parsed(const std::string& text) {
  json_error_t error;
  json_t* json = json_loads(text.c_str(), JSON_REJECT_DUPLICATES, &error);
  EXPECT_NE(json, nullptr) << error.text << '\n' << text;
  return JsonPtr(json);
}

// Everything but what the catalogues say beyond the document, on one line.
std::string told(const Item& item) {
  std::string text = id_text(item.id) + " " + path_of(item) + " [" + item.unit + "] " +
                     item.access + " " + (item.kind ? std::string(kind_name(*item.kind)) : "-");
  for (const auto& end : {item.min, item.max}) {
    text += end ? " " + short_number(*end) : " -";
  }
  for (const Option& option : item.options) {
    text += " " + std::to_string(option.value) + "=" + option.label;
  }
  return text;
}

TEST(CapabilityDocument, ElementsBecomeItems) {
  const JsonPtr document = parsed(R"({
    "F": {"id": 1, "P": {"bn": "P 1", "bu": "V", "e": [
      {"id": 4294967295, "n": "a", "v": 0.5, "asm": "r", "min": -1, "max": 2.5},
      {"id": 0, "n": "b", "u": "mA", "v": 5, "asm": "rw", "desc": "0=x|1=y"},
      {"id": 1, "n": "c", "bv": 1}, {"id": 2, "n": 7, "sv": "t", "u": 7},
      {"id": -1, "v": 1}, {"id": 4294967296, "v": 1}, {"id": "3", "v": 1}, {"id": 4.0, "v": 1},
      {"id": 5}, {"id": 6, "v": "x"}, {"v": 1}, null, 7]}},
    "G": 1, "H": {"Q": {"e": {}}, "R": {"e": [{"id": 3, "v": 0}]}, "S": []}})");
  std::string items;
  for (const Item& item : items_of_document(document.get())) {
    items += told(item) + "\n";
  }
  EXPECT_EQ(items,
            "0xFFFFFFFF F/P 1/a [V] r real -1 2.5\n"
            "0x00000000 F/P 1/b [mA] rw integer - - 0=x 1=y\n"
            "0x00000001 F/P 1/c [V]  boolean - -\n"
            "0x00000002 F/P 1/ [V]  text - -\n"
            "0x00000003 H// []  integer - -\n");
}

TEST(ItemData, EachFamilyHasATitleForPeople) {
  for (const FamilyData& family : item_data()) {
    EXPECT_NE(family.title, "") << family.name;
  }
}

TEST(ItemData, RefusesWhatThisReleaseDoesNotKnow) {
  for (const auto& [text, reason] :
       {std::pair("{\n{", "items.json: line 2: "),
        {"{\"format\": 2}", "items.json: not of format 1"},
        {R"({"format": 1, "families": [{"packages": [{"items": [{"kind": "wide"}]}]}]})",
         "items.json: 'wide' is not known"},
        {R"({"format": 1, "families": [], "families": []})", "items.json: line 1: duplicate"}}) {
    try {
      parse_item_data(text);
      ADD_FAILURE() << text;
    } catch (const std::runtime_error& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with(reason)) << error.what();
    }
  }
}

// An item of every kind of value, with every state of a reading.
constexpr const char* kList = R"json({"ok":false,"items":[
{"id":"0x00000001","name":"a","family":"F","package":"P","path":"F/P/a","access":"rw",
 "role":"setting","kind":"integer","min":0.0,"max":1.5,
 "options":[{"value":0,"label":"off"},{"value":2,"label":"on"}],
 "value":2,"label":"on","unit":"V","in_range":false,"ok":true,"status":"IOT_STATUS_SUCCESS","code":0},
{"id":"0x00000002","name":"b","family":"F","package":"P","path":"F/P/b","access":"r",
 "role":"reading","kind":"real","max":12.5,"value":12.5,"in_range":true,
 "ok":true,"status":"IOT_STATUS_SUCCESS","code":0},
{"id":"0x00000003","name":"c","family":"F","package":"P","path":"F/P/c","access":"r",
 "role":"identity","kind":"text","value":"x\u0007","ok":true,"status":"IOT_STATUS_SUCCESS","code":0},
{"id":"0x00000004","name":"d","family":"F","package":"P","path":"F/P/d","access":"r","role":"state",
 "kind":"boolean","min":0.0,"value":null,"ok":true,"status":"IOT_STATUS_SUCCESS","code":0},
{"id":"0x00000005","name":"e","family":"F","package":"P","path":"F/P/e","access":"w",
 "role":"default","kind":"text","value":null,"unit":"min",
 "failure":"the device did not answer (0x5)","ok":false,"status":null,"code":5},
{"id":"0x00000006","name":"f","value":1,"ok":true,"status":"IOT_STATUS_SUCCESS","code":0}]})json";

TEST(ListDocument, IsReadBackAsItWasWritten) {
  const std::vector<ListedItem> listed = parse_list_document(kList, "list");
  std::vector<Item> items;
  Readings readings;
  for (const ListedItem& entry : listed) {
    items.push_back(entry.item);
    readings[entry.item.id] = entry.reading;
  }
  const JsonPtr written = json_items(items, readings);
  EXPECT_TRUE(json_equal(written.get(), parsed(kList).get()))
      << json_document(written.get(), JsonLayout::one_line);
  EXPECT_EQ(listed[3].reading.state, Reading::State::absent);
  const JsonPtr brief = json_item(items[1], readings[2], Detail::brief);
  EXPECT_EQ(json_document(brief.get(), JsonLayout::one_line),
            "{\"id\":\"0x00000002\",\"name\":\"b\",\"value\":12.5,\"in_range\":true,\"ok\":true,"
            "\"status\":\"IOT_STATUS_SUCCESS\",\"code\":0}\n");
  EXPECT_TRUE(json_is_true(json_object_get(json_items({}, {}).get(), "ok")));
}

TEST(ListDocument, RefusesOtherTexts) {
  const std::pair<const char*, const char*> cases[] = {
      {"[", "line 1: "},
      {"{\"items\": [], \"items\": []}", "line 1: duplicate"},
      {R"({"items": [{"value": 1, "ok": true, "code": 0}]})", "an item without an ID"},
      {R"({"items": [{"id": "0x1", "ok": true, "code": 0}]})", "0x1 without \"value\", \"ok\" or"},
      {R"({"items": [{"id": "0x1", "value": 1, "ok": 1, "code": 0}]})", "0x1 without"},
      {R"({"items": [{"id": "0x1", "value": 1, "ok": true}]})", "0x1 without"},
  };
  for (const auto& [text, reason] : cases) {
    const std::string message = refusal([&, &json = text] { parse_list_document(json, "'f'"); });
    EXPECT_EQ(message.find(reason), sizeof "'f' is no output of kovactl list --json: " - 1)
        << message;
  }
}

}  // namespace
}  // namespace kova_host
