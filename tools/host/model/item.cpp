// One item, and the words for it.
#include "tools/host/model/item.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace kova_host {

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

std::string_view role_name(Role role) {
  switch (role) {
    case Role::identity:
      return "identity";
    case Role::reading:
      return "reading";
    case Role::state:
      return "state";
    case Role::setting:
      return "setting";
    case Role::factory_default:
      return "default";
    case Role::unknown:
      return "";
  }
  return "";
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
