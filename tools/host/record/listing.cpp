// A machine's items with their readings at one time.
#include "tools/host/record/listing.h"

#include <fmt/format.h>

#include <map>
#include <set>

#include "tools/host/model/selection.h"
#include "tools/host/record/replay_walk.h"
#include "tools/host/session/inventory.h"
#include "tools/host/system/duration.h"
#include "tools/host/system/errors.h"

namespace kova_host {
namespace {

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

RecordedListing list_recording(const Replay& replay, const Session& session,
                               std::chrono::milliseconds at) {
  if (at >= replay.length()) {
    throw HostError(Fault::usage, fmt::format("the recording ends at {}: it has nothing at {}",
                                              duration_text(replay.length()), duration_text(at)));
  }
  const std::vector<Item> items = distinct(Inventory::of(session).items());
  RecordedListing result;
  Readings readings;
  std::set<uint32_t> failed;
  ReplayWalk walk(replay, session, items, std::chrono::seconds(1));
  while (walk.next()) {
    if (walk.time() <= at) {
      readings = walk.readings();
      continue;
    }
    for (const uint32_t id : walk.fresh()) {
      const Reading& reading = walk.readings().at(id);
      if (reading.state == Reading::State::failed &&
          readings.at(id).state != Reading::State::failed && failed.insert(id).second) {
        result.later.push_back({id, walk.time(), reading.status});
      }
    }
  }
  for (const Item& item : items) {
    result.listing.push_back({item, readings.at(item.id)});
  }
  return result;
}

Listing listing_from(const std::vector<ListedItem>& listed) {
  Listing listing;
  std::set<uint32_t> seen;
  for (const ListedItem& entry : listed) {
    if (seen.insert(entry.item.id).second) {
      listing.push_back(entry);
      Role& role = listing.back().item.facts.role;
      role = role == Role::unknown ? known_role(entry.item.id) : role;
    }
  }
  return listing;
}

bool is_list_document(std::string_view json) {
  const JsonPtr document(json_loadb(json.data(), json.size(), 0, nullptr));
  return json_object_get(document.get(), "items") != nullptr;
}

}  // namespace kova_host
