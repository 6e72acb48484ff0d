// A machine's items with their readings at one time, each ID once, to be compared with another.
#pragma once

#include <chrono>
#include <string_view>
#include <vector>

#include "tools/host/record/listing_file.h"
#include "tools/host/record/replay.h"
#include "tools/host/session/session.h"

namespace kova_host {

using Listing = std::vector<ListedItem>;

// Every item of the started module's machine.
Listing list_machine(const Session& session);

// An item that fails in a recording, after the time at which it was listed and could be read.
struct LaterFailure {
  uint32_t id = 0;
  std::chrono::milliseconds time{0};  // the first time, since the beginning
  uint32_t status = 0;
};

struct RecordedListing {
  Listing listing;
  std::vector<LaterFailure> later;  // in order of time
};

// A recording as it is at `at`, and what fails later. Throws HostError (usage) for a time after its
// end.
RecordedListing list_recording(const Replay& replay, const Session& session,
                               std::chrono::milliseconds at);

// Items as list --json printed them. Those of a release that printed no role get this release's.
Listing listing_from(const std::vector<ListedItem>& listed);

// True for the output of list --json rather than a machine description: an object that has
// "items".
bool is_list_document(std::string_view json);

}  // namespace kova_host
