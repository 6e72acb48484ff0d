// One item, and the words for it.
#include "tools/host/model/item.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace kova_host {

namespace {

template <typename Value>
struct Word {
  Value value;
  std::string_view word;
};

constexpr Word<ValueKind> kKinds[] = {{ValueKind::integer, "integer"},
                                      {ValueKind::real, "real"},
                                      {ValueKind::boolean, "boolean"},
                                      {ValueKind::text, "text"}};

constexpr Word<Role> kRoles[] = {{Role::identity, "identity"},
                                 {Role::reading, "reading"},
                                 {Role::state, "state"},
                                 {Role::setting, "setting"},
                                 {Role::factory_default, "default"}};

template <typename Value, size_t size>
std::string_view word_for(const Word<Value> (&words)[size], Value value) {
  const auto* match = std::ranges::find(words, value, &Word<Value>::value);
  return match == std::end(words) ? std::string_view() : match->word;
}

template <typename Value, size_t size>
std::optional<Value> value_for(const Word<Value> (&words)[size], std::string_view word) {
  const auto* match = std::ranges::find(words, word, &Word<Value>::word);
  return match == std::end(words) ? std::nullopt : std::optional(match->value);
}

}  // namespace

std::string_view kind_name(ValueKind kind) {
  return word_for(kKinds, kind);
}

std::optional<ValueKind> kind_called(std::string_view name) {
  return value_for(kKinds, name);
}

std::string_view role_name(Role role) {
  return word_for(kRoles, role);
}

std::optional<Role> role_called(std::string_view name) {
  return value_for(kRoles, name);
}

std::string id_text(uint32_t id) {
  return fmt::format("0x{:08X}", id);
}

std::string path_of(const Item& item) {
  return fmt::format("{}/{}/{}", item.family, item.package, item.name);
}

std::string label_of(const Item& item) {
  return item.name.empty() ? id_text(item.id) : path_of(item);
}

std::string name_or_path(const Item& item) {
  return item.unique_name ? item.name : path_of(item);
}

void mark_names_in_doubt(std::vector<Item>& items) {
  std::map<std::string_view, std::set<uint32_t>> bearers;
  for (const Item& item : items) {
    bearers[item.name].insert(item.id);
  }
  for (Item& item : items) {
    item.unique_name = item.name.empty() || bearers[item.name].size() == 1;
  }
}

std::string_view option_label(const Item& item, int64_t value) {
  const auto match = std::find_if(item.options.begin(), item.options.end(),
                                  [value](const Option& o) { return o.value == value; });
  return match == item.options.end() ? std::string_view() : match->label;
}

}  // namespace kova_host
