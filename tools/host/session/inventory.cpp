// Every item that a machine has or should have.
#include "tools/host/session/inventory.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <tuple>

#include "include/kova_iot.h"
#include "tools/host/model/capability_document.h"

namespace kova_host {
namespace {

bool has_family(const std::vector<Item>& items, const std::string& family) {
  return std::any_of(items.begin(), items.end(),
                     [&family](const Item& item) { return item.family == family; });
}

bool answers_as_present(const Session& session, const FamilyData& family) {
  const std::vector<Item> items = family.items(1);
  if (items.empty()) {
    return false;
  }
  const ItemAnswer answer = session.read({items.front().id, ValueKind::integer});
  return !answer.reason.empty() || answer.status != IOT_STATUS_NOT_READY;
}

// Packages of one family in the document: as many ports or modules as that.
uint32_t packages_in(const std::vector<Item>& items, const std::string& family) {
  std::set<std::string_view> packages;
  for (const Item& item : items) {
    if (item.family == family) {
      packages.insert(item.package);
    }
  }
  return static_cast<uint32_t>(packages.size());
}

// True if the first word of the instance can be read.
bool answers(const FamilyData& family, uint32_t number, const ReadWord& read) {
  const std::vector<Item> items = family.items(1);
  return !items.empty() && !items.front().facts.codes.empty() &&
         read(items.front().facts.codes.front() + (number - 1) * family.instances->code_step);
}

// Leaves out the instances above `count`.
void let_go(const FamilyData& family, uint32_t count, std::vector<Item>& published) {
  std::set<uint32_t> kept;
  for (const Item& item : family.items(count)) {
    kept.insert(item.id);
  }
  std::set<uint32_t> known;
  for (const Item& item : family.items(family.instances->max)) {
    known.insert(item.id);
  }
  std::erase_if(published, [&](const Item& item) {
    return item.family == family.name && known.contains(item.id) && !kept.contains(item.id);
  });
}

// Of the document's items those of instances that the device never had are left out.
std::vector<Item> expected_items(const Session& session, std::vector<Item>& published) {
  const ReadWord read = [&session](uint32_t code) -> std::optional<uint32_t> {
    const auto answer = session.read_code(code);
    return answer && answer->status == 0 ? std::optional(answer->word) : std::nullopt;
  };
  std::vector<Item> expected;
  for (const FamilyData& family : item_data()) {
    if (!has_family(published, family.name) && !answers_as_present(session, family)) {
      continue;
    }
    uint32_t count = 1;
    if (family.instances) {
      count = instances_there(family, packages_in(published, family.name), read);
      let_go(family, count, published);
    }
    std::vector<Item> items = family.items(count);
    std::move(items.begin(), items.end(), std::back_inserter(expected));
  }
  return expected;
}

// The document's item, completed by what the catalogues say.
Item completed(Item published, const Item& known) {
  published.facts = known.facts;
  if (published.options.empty()) {
    published.options = known.options;
  }
  return published;
}

}  // namespace

uint32_t count_instances(const InstanceRule& rule, const ReadWord& read) {
  for (const CountRule& count : rule.counted_by) {
    const auto word = read(count.code);
    if (word && (!count.equals || *word == *count.equals)) {
      const uint32_t counted = count.equals ? count.count : *word;
      return counted <= rule.max ? counted : 0;
    }
  }
  return 0;
}

uint32_t instances_there(const FamilyData& family, uint32_t published, const ReadWord& read) {
  const InstanceRule& rule = *family.instances;
  const uint32_t first = count_instances(rule, read);
  const uint32_t second = count_instances(rule, read);
  // The module walks a garbled count to the end of what there can be.
  const bool is_walked = published == rule.max && !rule.counted_by.back().equals;
  const uint32_t sure = first == second && first > 0 ? first : is_walked ? 0 : published;
  uint32_t count = std::max({published, first, second});
  while (count > sure && !answers(family, count, read)) {
    --count;
  }
  return count;
}

Inventory Inventory::of(const Session& session) {
  std::vector<Item> published = items_of_document(session.capability().get());
  const std::vector<Item> expected = expected_items(session, published);
  return Inventory(std::move(published), expected);
}

Inventory::Inventory(std::vector<Item> published, const std::vector<Item>& expected) {
  using Place = std::tuple<std::string, std::string, uint32_t>;
  std::map<Place, size_t> places;
  for (size_t i = 0; i < published.size(); ++i) {
    places.try_emplace({published[i].family, published[i].package, published[i].id}, i);
  }
  std::vector<bool> taken(published.size());
  for (const Item& item : expected) {
    const auto place = places.find({item.family, item.package, item.id});
    if (place == places.end()) {
      items_.push_back(item);
    } else {
      taken[place->second] = true;
      items_.push_back(completed(published[place->second], item));
    }
  }
  // What this release does not know goes to the end of its family.
  for (size_t i = 0; i < published.size(); ++i) {
    if (!taken[i]) {
      const auto last = std::find_if(
          items_.rbegin(), items_.rend(),
          [&published, i](const Item& item) { return item.family == published[i].family; });
      items_.insert(last == items_.rend() ? items_.end() : last.base(), std::move(published[i]));
    }
  }
  mark_names_in_doubt(items_);
}

const Item* Inventory::find(uint32_t id) const {
  const auto match =
      std::find_if(items_.begin(), items_.end(), [id](const Item& item) { return item.id == id; });
  return match == items_.end() ? nullptr : &*match;
}

}  // namespace kova_host
