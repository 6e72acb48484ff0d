// What has changed between two listings of a machine.
#include "tools/host/record/comparison.h"

#include <algorithm>
#include <map>

namespace kova_host {
namespace {

using State = Reading::State;

std::map<uint32_t, const ListedItem*> by_id(const Listing& listing) {
  std::map<uint32_t, const ListedItem*> result;
  for (const ListedItem& listed : listing) {
    result.emplace(listed.item.id, &listed);
  }
  return result;
}

// Numbers compare as numbers: a listing may say 2 where the machine says 2.0.
bool same_value(const Reading& a, const Reading& b) {
  return a.number() && b.number() ? *a.number() == *b.number() : a.value == b.value;
}

std::optional<ChangeKind> change_of_failure(const Reading& before, const Reading& after) {
  if (before.state == State::failed && after.state == State::failed) {
    return before.status == after.status ? std::nullopt : std::optional(ChangeKind::fails_new);
  }
  return after.state == State::failed ? ChangeKind::fails : ChangeKind::recovered;
}

// Nothing if both are the same to whoever looks for what is wrong.
std::optional<ChangeKind> change_between(const ListedItem& before, const ListedItem& after) {
  if (before.reading.state == State::failed || after.reading.state == State::failed) {
    return change_of_failure(before.reading, after.reading);
  }
  if (!same_value(before.reading, after.reading)) {
    const bool crossed =
        out_of_range(before.item, before.reading) != out_of_range(after.item, after.reading);
    return crossed ? ChangeKind::crossed : ChangeKind::value;
  }
  if (before.item.min != after.item.min || before.item.max != after.item.max) {
    return ChangeKind::range;
  }
  return std::nullopt;
}

// Only a measured value, only somewhere else within or without its range.
bool merely_moves(const Change& change) {
  return change.kind == ChangeKind::value && change.item().facts.role == Role::reading &&
         change.before->reading.state == State::good && change.after->reading.state == State::good;
}

}  // namespace

std::string_view change_name(ChangeKind kind) {
  constexpr std::string_view kNames[] = {
      "changed",         "range crossed", "range changed", "fails now",
      "fails otherwise", "reads again",   "vanished",      "new"};
  return kNames[static_cast<size_t>(kind)];
}

Comparison compare(const Listing& before, const Listing& after, bool all) {
  Comparison result;
  const auto old_items = by_id(before);
  const auto new_items = by_id(after);
  for (const ListedItem& now : after) {
    const auto old_item = old_items.find(now.item.id);
    if (old_item == old_items.end()) {
      result.changes.push_back({ChangeKind::appeared, std::nullopt, now});
      continue;
    }
    if (now.reading.redacted || old_item->second->reading.redacted) {
      ++result.redacted;
      continue;
    }
    ++result.compared;
    if (const auto kind = change_between(*old_item->second, now)) {
      Change change{*kind, *old_item->second, now};
      if (!all && merely_moves(change)) {
        ++result.moving;
      } else {
        result.changes.push_back(std::move(change));
      }
    }
  }
  for (const ListedItem& then : before) {
    if (!new_items.contains(then.item.id)) {
      result.changes.push_back({ChangeKind::vanished, then, std::nullopt});
    }
  }
  return result;
}

}  // namespace kova_host
