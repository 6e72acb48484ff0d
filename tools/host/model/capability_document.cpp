// Reads the capability document into a flat list of items.
#include "tools/host/model/capability_document.h"

namespace kova_host {
namespace {

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
std::optional<Item> item_from_element(const json_t* element, const std::string& family,
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
  item.package = text_at(package, "bn");
  item.name = text_at(element, "n");
  item.unit = text_at(element, "u");
  if (item.unit.empty()) {
    item.unit = text_at(package, "bu");
  }
  item.access = text_at(element, "asm");
  item.kind = kind;
  item.min = number_at(element, "min");
  item.max = number_at(element, "max");
  item.options = parse_options(text_at(element, "desc"));
  return item;
}

void collect_package(const json_t* package, const std::string& family, std::vector<Item>& items) {
  const json_t* elements = json_object_get(package, "e");
  for (size_t i = 0; i < json_array_size(elements); ++i) {
    if (auto item = item_from_element(json_array_get(elements, i), family, package)) {
      items.push_back(std::move(*item));
    }
  }
}

}  // namespace

std::vector<Item> items_of_document(const json_t* document) {
  std::vector<Item> items;
  // jansson's iteration takes a mutable value and changes nothing.
  auto* root = const_cast<json_t*>(document);
  const char* family = nullptr;
  json_t* function_package = nullptr;
  json_object_foreach(root, family, function_package) {
    const char* key = nullptr;
    json_t* package = nullptr;
    json_object_foreach(function_package, key, package) {
      collect_package(package, family, items);
    }
  }
  return items;
}

}  // namespace kova_host
