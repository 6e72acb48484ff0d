// Readings as they were told before: what `kovactl list --json` prints, read back.
#include "tools/host/record/listing_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>

#include "include/kova_iot.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/regular_file.h"
#include "tools/host/system/typed_number.h"

namespace kova_host {
namespace {

class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

Item item_from_list(const json_t* json) {
  const auto id = parse_item_id(text_at(json, "id"));
  if (!id) {
    throw Refusal("an item without an ID");
  }
  Item item;
  item.id = *id;
  item.name = text_at(json, "name");
  item.family = text_at(json, "family");
  item.package = text_at(json, "package");
  item.unit = text_at(json, "unit");
  item.access = text_at(json, "access");
  item.kind = kind_called(text_at(json, "kind"));
  item.facts.role = role_called(text_at(json, "role")).value_or(Role::unknown);
  item.min = number_at(json, "min");
  item.max = number_at(json, "max");
  const json_t* options = json_object_get(json, "options");
  for (size_t i = 0; i < json_array_size(options); ++i) {
    const json_t* option = json_array_get(options, i);
    item.options.push_back(
        {json_integer_value(json_object_get(option, "value")), text_at(option, "label")});
  }
  return item;
}

Reading reading_from(const json_t* json) {
  Reading reading;
  const json_t* value = json_object_get(json, "value");
  const json_t* code = json_object_get(json, "code");
  const json_t* ok = json_object_get(json, "ok");
  if (value == nullptr || !json_is_boolean(ok) || !json_is_integer(code)) {
    throw Refusal(fmt::format("{} without \"value\", \"ok\" or \"code\"", text_at(json, "id")));
  }
  reading.status = static_cast<uint32_t>(json_integer_value(code));
  if (json_is_string(value)) {
    reading.value = text_at(json, "value");
  } else if (json_is_integer(value)) {
    reading.value = static_cast<int64_t>(json_integer_value(value));
  } else if (json_is_real(value)) {
    reading.value = json_real_value(value);
  }
  reading.in_part = text_at(json, "in_part");
  reading.redacted = json_is_true(json_object_get(json, "redacted"));
  if (json_is_true(ok)) {
    reading.state = json_is_null(value) ? Reading::State::absent : Reading::State::good;
  }
  return reading;
}

}  // namespace

std::vector<ListedItem> parse_list_document(std::string_view text, const std::string& name) {
  json_error_t error;
  const std::unique_ptr<json_t, JsonRelease> document(
      json_loadb(text.data(), text.size(), JSON_REJECT_DUPLICATES, &error));
  try {
    if (document == nullptr) {
      throw Refusal(fmt::format("line {}: {}", error.line, error.text));
    }
    const json_t* array = json_object_get(document.get(), "items");
    if (!json_is_array(array)) {
      throw Refusal("\"items\" is missing");
    }
    std::vector<ListedItem> items;
    for (size_t i = 0; i < json_array_size(array); ++i) {
      const json_t* entry = json_array_get(array, i);
      items.push_back({item_from_list(entry), reading_from(entry)});
    }
    return items;
  } catch (const Refusal& refusal) {
    throw HostError(Fault::usage, fmt::format("{} is no output of kovactl list --json: {}", name,
                                              refusal.what()));
  }
}

std::vector<ListedItem> read_list_document(const std::string& file) {
  return parse_list_document(read_file_or_stdin(file), "'" + file + "'");
}

std::vector<Item> with_missing(std::vector<Item> items, const std::vector<ListedItem>& expected) {
  std::set<uint32_t> present;
  for (const Item& item : items) {
    present.insert(item.id);
  }
  for (const ListedItem& listed : expected) {
    if (!present.contains(listed.item.id)) {
      items.push_back(listed.item);
      items.back().missing = true;
    }
  }
  mark_names_in_doubt(items);
  return items;
}

}  // namespace kova_host
