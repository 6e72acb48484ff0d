// Listings: made from a session, or read from what list --json has printed.
#include "tools/host/listing.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "tools/host/errors.h"
#include "tools/host/inventory.h"
#include "tools/host/json_ptr.h"
#include "tools/host/selection.h"

namespace kova_host {
namespace {

[[noreturn]] void refuse(const std::string& file, std::string_view reason) {
  throw HostError(Fault::usage, fmt::format("{}: {}", file, reason));
}

JsonPtr parse(std::string_view json) {
  return JsonPtr(json_loadb(json.data(), json.size(), JSON_ALLOW_NUL, nullptr));
}

std::string text_at(const json_t* object, const char* key) {
  const json_t* text = json_object_get(object, key);
  return json_is_string(text) ? std::string(json_string_value(text), json_string_length(text)) : "";
}

std::optional<double> number_at(const json_t* object, const char* key) {
  const json_t* value = json_object_get(object, key);
  return json_is_number(value) ? std::optional(json_number_value(value)) : std::nullopt;
}

template <typename Value, size_t size>
std::optional<Value> named(const std::array<Value, size>& values,
                           std::string_view (*name_of)(Value), const std::string& name) {
  const auto match = std::find_if(values.begin(), values.end(),
                                  [&](Value value) { return name_of(value) == name; });
  return match == values.end() ? std::nullopt : std::optional(*match);
}

constexpr std::array kRoles = {Role::identity, Role::reading, Role::state, Role::setting,
                               Role::factory_default};
constexpr std::array kKinds = {ValueKind::integer, ValueKind::real, ValueKind::boolean,
                               ValueKind::text};

Role known_role(uint32_t id) {
  static const std::map<uint32_t, Role> roles = [] {
    std::map<uint32_t, Role> all;
    for (const FamilyData& family : item_data()) {
      for (const Item& item : family.items(family.instances ? family.instances->max : 1)) {
        all.emplace(item.id, item.facts.role);
      }
    }
    return all;
  }();
  const auto role = roles.find(id);
  return role == roles.end() ? Role::unknown : role->second;
}

Item item_from(const json_t* json, uint32_t id) {
  Item item;
  item.id = id;
  item.name = text_at(json, "name");
  item.family = text_at(json, "family");
  item.package = text_at(json, "package");
  item.unit = text_at(json, "unit");
  item.access = text_at(json, "access");
  item.kind = named(kKinds, kind_name, text_at(json, "kind"));
  item.min = number_at(json, "min");
  item.max = number_at(json, "max");
  item.facts.role = named(kRoles, role_name, text_at(json, "role")).value_or(known_role(id));
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
  reading.status = static_cast<uint32_t>(json_integer_value(json_object_get(json, "code")));
  if (!json_is_true(json_object_get(json, "ok"))) {
    return reading;
  }
  const json_t* value = json_object_get(json, "value");
  reading.state = Reading::State::good;
  if (json_is_integer(value)) {
    reading.value = int64_t{json_integer_value(value)};
  } else if (json_is_real(value)) {
    reading.value = json_real_value(value);
  } else if (json_is_string(value)) {
    reading.value = text_at(json, "value");
  } else {
    reading.state = Reading::State::absent;
  }
  return reading;
}

}  // namespace

Listing list_machine(const Session& session) {
  const std::vector<Item> items = distinct(Inventory::of(session).items());
  const Readings readings = read_items(session, items);
  Listing listing;
  for (const Item& item : items) {
    listing.push_back({item, readings.at(item.id)});
  }
  return listing;
}

Listing read_listing(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  if (!stream || !(text << stream.rdbuf())) {
    refuse(file, "cannot be read");
  }
  return parse_listing(text.str(), file);
}

std::vector<Item> missing_items(const std::vector<Item>& items, const Listing& expected) {
  std::set<uint32_t> present;
  for (const Item& item : items) {
    present.insert(item.id);
  }
  std::vector<Item> missing;
  for (const ListedItem& listed : expected) {
    if (!present.contains(listed.item.id)) {
      missing.push_back(listed.item);
      missing.back().missing = true;
    }
  }
  return missing;
}

bool is_listing(std::string_view json) {
  return json_is_array(json_object_get(parse(json).get(), "items"));
}

Listing parse_listing(std::string_view json, const std::string& file) {
  const JsonPtr document = parse(json);
  const json_t* items = json_object_get(document.get(), "items");
  if (!json_is_array(items)) {
    refuse(file, "no output of list --json");
  }
  Listing listing;
  std::set<uint32_t> seen;
  for (size_t i = 0; i < json_array_size(items); ++i) {
    const json_t* json_item = json_array_get(items, i);
    const auto id = parse_item_id(text_at(json_item, "id"));
    if (!id || !json_is_boolean(json_object_get(json_item, "ok"))) {
      refuse(file, fmt::format("item {} is none that list --json prints", i + 1));
    }
    if (seen.insert(*id).second) {
      listing.push_back({item_from(json_item, *id), reading_from(json_item)});
    }
  }
  return listing;
}

}  // namespace kova_host
