// Reads the capability document into a flat list of items.
#include "tools/host/catalogue.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace kova_host {
namespace {

std::string text_of(const json_t* object, const char* key) {
  const json_t* value = json_object_get(object, key);
  return json_is_string(value) ? std::string(json_string_value(value), json_string_length(value))
                               : std::string();
}

std::optional<double> number_of(const json_t* object, const char* key) {
  const json_t* value = json_object_get(object, key);
  return json_is_number(value) ? std::optional(json_number_value(value)) : std::nullopt;
}

std::optional<ValueKind> kind_of(const json_t* element) {
  if (json_object_get(element, "sv") != nullptr) {
    return ValueKind::text;
  }
  if (json_object_get(element, "bv") != nullptr) {
    return ValueKind::boolean;
  }
  const json_t* value = json_object_get(element, "v");
  if (json_is_real(value)) {
    return ValueKind::real;
  }
  return json_is_integer(value) ? std::optional(ValueKind::integer) : std::nullopt;
}

// Nothing for an element without a usable ID or value.
std::optional<Item> item_from(const json_t* element, const std::string& family,
                              const json_t* package) {
  const json_t* id = json_object_get(element, "id");
  const auto kind = kind_of(element);
  if (!json_is_integer(id) || json_integer_value(id) < 0 || json_integer_value(id) > UINT32_MAX ||
      !kind) {
    return std::nullopt;
  }
  Item item;
  item.id = static_cast<uint32_t>(json_integer_value(id));
  item.family = family;
  item.package = text_of(package, "bn");
  item.name = text_of(element, "n");
  item.unit = text_of(element, "u");
  if (item.unit.empty()) {
    item.unit = text_of(package, "bu");
  }
  item.access = text_of(element, "asm");
  item.kind = kind;
  item.min = number_of(element, "min");
  item.max = number_of(element, "max");
  item.options = parse_options(text_of(element, "desc"));
  return item;
}

void collect_package(const json_t* package, const std::string& family, std::vector<Item>& items) {
  const json_t* elements = json_object_get(package, "e");
  for (size_t i = 0; i < json_array_size(elements); ++i) {
    if (auto item = item_from(json_array_get(elements, i), family, package)) {
      items.push_back(std::move(*item));
    }
  }
}

}  // namespace

std::string_view kind_name(ValueKind kind) {
  switch (kind) {
    case ValueKind::integer:
      return "integer";
    case ValueKind::real:
      return "real";
    case ValueKind::boolean:
      return "boolean";
    case ValueKind::text:
      return "text";
  }
  return "";
}

std::string id_text(uint32_t id) {
  return fmt::format("0x{:08X}", id);
}

std::string_view option_label(const Item& item, int64_t value) {
  const auto match = std::find_if(item.options.begin(), item.options.end(),
                                  [value](const Option& o) { return o.value == value; });
  return match == item.options.end() ? std::string_view() : match->label;
}

Catalogue Catalogue::from_document(const json_t* document) {
  Catalogue catalogue;
  // jansson's iteration takes a mutable value and changes nothing.
  auto* root = const_cast<json_t*>(document);
  const char* family = nullptr;
  json_t* function_package = nullptr;
  json_object_foreach(root, family, function_package) {
    const char* key = nullptr;
    json_t* package = nullptr;
    json_object_foreach(function_package, key, package) {
      collect_package(package, family, catalogue.items_);
    }
  }
  return catalogue;
}

std::vector<Item> Catalogue::distinct_items() const {
  std::vector<Item> result;
  std::set<uint32_t> seen;
  for (const Item& item : items_) {
    if (seen.insert(item.id).second) {
      result.push_back(item);
    }
  }
  return result;
}

std::vector<Item> Catalogue::family_items(std::string_view family) const {
  std::vector<Item> result;
  std::copy_if(items_.begin(), items_.end(), std::back_inserter(result),
               [family](const Item& item) { return same_word(item.family, family); });
  return result;
}

std::vector<std::string> Catalogue::family_names() const {
  std::vector<std::string> names;
  for (const Item& item : items_) {
    if (std::find(names.begin(), names.end(), item.family) == names.end()) {
      names.push_back(item.family);
    }
  }
  return names;
}

const Item* Catalogue::find(uint32_t id) const {
  const auto match =
      std::find_if(items_.begin(), items_.end(), [id](const Item& item) { return item.id == id; });
  return match == items_.end() ? nullptr : &*match;
}

Item Catalogue::describe(uint32_t id) const {
  if (const Item* item = find(id)) {
    return *item;
  }
  Item unlisted;
  unlisted.id = id;
  return unlisted;
}

std::vector<Item> Catalogue::describe(const std::vector<uint32_t>& ids) const {
  std::vector<Item> result(ids.size());
  std::transform(ids.begin(), ids.end(), result.begin(),
                 [this](uint32_t id) { return describe(id); });
  return result;
}

}  // namespace kova_host
