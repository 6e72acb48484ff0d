// What has changed between two listings of a machine.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "tools/host/record/listing.h"

namespace kova_host {

enum class ChangeKind {
  value,      // another value, label or text
  crossed,    // a measured value has left its range, or come back
  range,      // the range itself is another one
  fails,      // could be read, and can no longer
  fails_new,  // fails with another status
  recovered,  // can be read again
  vanished,
  appeared,
};

// "changed", "out of range", ...: the word for it in outputs.
std::string_view change_name(ChangeKind kind);

struct Change {
  ChangeKind kind = ChangeKind::value;
  std::optional<ListedItem> before;
  std::optional<ListedItem> after;

  const Item& item() const { return after ? after->item : before->item; }
};

struct Comparison {
  std::vector<Change> changes;  // in the order of the newer listing, then what has vanished
  size_t compared = 0;          // items that both have and show
  size_t redacted = 0;          // items that one of them shows a blank for
  size_t moving = 0;            // measured values left out that merely moved
};

// Settings, identities, conditions and whether an item can be read count. A measured value counts
// where it crosses an end of its range, or appears or disappears as "N/A"; with `all` always.
Comparison compare(const Listing& before, const Listing& after, bool all);

}  // namespace kova_host
