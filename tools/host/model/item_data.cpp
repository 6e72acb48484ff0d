// Reads items.json.
#include "tools/host/model/item_data.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "tools/host/system/json_ptr.h"

namespace kova_host {

extern const std::string_view kItemsJson;  // made by the build

namespace {

uint32_t word_at(const json_t* object, const char* key) {
  return static_cast<uint32_t>(json_integer_value(json_object_get(object, key)));
}

std::optional<uint32_t> optional_word_at(const json_t* object, const char* key) {
  return json_object_get(object, key) == nullptr ? std::nullopt
                                                 : std::optional(word_at(object, key));
}

template <typename Read>
auto each_of(const json_t* object, const char* key, Read read) {
  const json_t* array = json_object_get(object, key);
  std::vector<decltype(read(array))> result;
  for (size_t i = 0; i < json_array_size(array); ++i) {
    result.push_back(read(json_array_get(array, i)));
  }
  return result;
}

// Refuses a word that this release does not know.
template <typename Value>
Value known(std::optional<Value> value, const std::string& word) {
  if (!value) {
    throw std::runtime_error(fmt::format("items.json: '{}' is not known", word));
  }
  return *value;
}

// Where a switch stands for what other documents call a boolean.
ValueKind kind_at(const json_t* json) {
  const std::string word = text_at(json, "kind");
  return word == "switch" ? ValueKind::boolean : known(kind_called(word), word);
}

Role role_at(const json_t* json) {
  const std::string word = text_at(json, "role");
  return known(role_called(word), word);
}

WrittenAs written_as_at(const json_t* json) {
  const std::string word = text_at(json, "written_as");
  if (word == "switch") {
    return WrittenAs::on_off;
  }
  const bool integer = word.empty() || word == "integer";
  return integer ? WrittenAs::integer
                 : known(word == "scaled" ? std::optional(WrittenAs::scaled) : std::nullopt, word);
}

Option option_from(const json_t* json) {
  return {json_integer_value(json_object_get(json, "value")), text_at(json, "label")};
}

Item item_from_row(const json_t* json) {
  Item item;
  item.id = word_at(json, "id");
  item.name = text_at(json, "name");
  item.unit = text_at(json, "unit");
  item.access = text_at(json, "access");
  item.kind = kind_at(json);
  item.min = number_at(json, "min");
  item.max = number_at(json, "max");
  item.options = each_of(json, "options", option_from);
  item.published = false;
  item.facts.role = role_at(json);
  item.facts.is_private = json_is_true(json_object_get(json, "private"));
  item.facts.codes = each_of(json, "codes", [](const json_t* code) {
    return static_cast<uint32_t>(json_integer_value(code));
  });
  item.facts.write_code = optional_word_at(json, "write_code");
  item.facts.factory_default = optional_word_at(json, "factory_default");
  item.facts.factory_default_of = optional_word_at(json, "factory_default_of");
  item.facts.scale = number_at(json, "scale");
  item.facts.written_as = written_as_at(json);
  return item;
}

InstanceRule instances_from(const json_t* json) {
  return {text_at(json, "word"), word_at(json, "max"), word_at(json, "code_step"),
          word_at(json, "id_step"), each_of(json, "counted_by", [](const json_t* rule) {
            return CountRule{word_at(rule, "code"), optional_word_at(rule, "equals"),
                             word_at(rule, "count")};
          })};
}

FamilyData family_from(const json_t* json) {
  FamilyData family;
  family.name = text_at(json, "name");
  family.title = text_at(json, "title");
  family.id = word_at(json, "id");
  const json_t* presence = json_object_get(json, "presence");
  family.presence_code = word_at(presence, "code");
  family.present_if_readable = text_at(presence, "present") == "readable";
  family.status_when_read = word_at(json, "status_when_read");
  family.status_without_value = optional_word_at(json, "status_without_value");
  if (const json_t* instances = json_object_get(json, "instances")) {
    family.instances = instances_from(instances);
  }
  family.packages = each_of(json, "packages", [](const json_t* package) {
    return PackageData{word_at(package, "id"), text_at(package, "name"),
                       each_of(package, "items", item_from_row)};
  });
  family.second_places = each_of(json, "also", [](const json_t* place) {
    return SecondPlace{text_at(place, "family"), text_at(place, "package"), word_at(place, "of")};
  });
  return family;
}

// `text` with the number of the instance in the place of "{n}" or "{i}".
std::string numbered(std::string text, uint32_t number) {
  const std::array<std::pair<std::string_view, uint32_t>, 2> marks = {
      {{"{n}", number}, {"{i}", number - 1}}};
  for (const auto& [mark, value] : marks) {
    if (const size_t at = text.find(mark); at != std::string::npos) {
      text.replace(at, mark.size(), std::to_string(value));
    }
  }
  return text;
}

// The `number`-th instance, from 1, of an item that stands as the first one in the data.
Item instance_of(Item item, const InstanceRule& rule, uint32_t number) {
  item.name = numbered(item.name, number);
  item.id += (number - 1) * rule.id_step;
  for (uint32_t& code : item.facts.codes) {
    code += (number - 1) * rule.code_step;
  }
  if (item.facts.write_code) {
    *item.facts.write_code += (number - 1) * rule.code_step;
  }
  return item;
}

void add_package(const PackageData& package, const std::string& family, const std::string& name,
                 std::vector<Item>& items) {
  for (Item item : package.items) {
    item.family = family;
    item.package = name;
    items.push_back(std::move(item));
  }
}

}  // namespace

std::vector<Item> FamilyData::items(uint32_t count) const {
  std::vector<Item> result;
  if (instances) {
    for (uint32_t number = 1; number <= std::min(count, instances->max); ++number) {
      for (const PackageData& package : packages) {
        const size_t first = result.size();
        add_package(package, name, numbered(package.name, number), result);
        std::transform(result.begin() + static_cast<std::ptrdiff_t>(first), result.end(),
                       result.begin() + static_cast<std::ptrdiff_t>(first), [&](Item& item) {
                         return instance_of(std::move(item), *instances, number);
                       });
      }
    }
    return result;
  }
  for (const PackageData& package : packages) {
    add_package(package, name, package.name, result);
  }
  for (const SecondPlace& place : second_places) {
    const auto package = std::find_if(packages.begin(), packages.end(),
                                      [&place](const auto& p) { return p.id == place.package_id; });
    if (package != packages.end()) {
      add_package(*package, place.family, place.package, result);
    }
  }
  return result;
}

std::vector<FamilyData> parse_item_data(std::string_view json) {
  json_error_t error;
  const std::unique_ptr<json_t, JsonRelease> document(
      json_loadb(json.data(), json.size(), JSON_REJECT_DUPLICATES, &error));
  if (document == nullptr) {
    throw std::runtime_error(fmt::format("items.json: line {}: {}", error.line, error.text));
  }
  constexpr uint32_t kFormat = 1;
  if (word_at(document.get(), "format") != kFormat) {
    throw std::runtime_error("items.json: not of format 1");
  }
  return each_of(document.get(), "families", family_from);
}

const std::vector<FamilyData>& item_data() {
  static const std::vector<FamilyData> data = parse_item_data(kItemsJson);
  return data;
}

const FamilyData* family_of(uint32_t item_id) {
  constexpr uint32_t kFamilyMask = 0xFFFF0000;
  const auto& data = item_data();
  const auto match = std::ranges::find(data, item_id & kFamilyMask, &FamilyData::id);
  return match == data.end() ? nullptr : &*match;
}

}  // namespace kova_host
