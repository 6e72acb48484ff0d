// A machine's items with their readings at one time, each ID once, to be compared with another.
#pragma once

#include <string_view>
#include <vector>

#include "tools/host/record/listing_file.h"
#include "tools/host/session/session.h"

namespace kova_host {

using Listing = std::vector<ListedItem>;

// Every item of the started module's machine.
Listing list_machine(const Session& session);

// Items as list --json printed them. Those of a release that printed no role get this release's.
Listing listing_from(const std::vector<ListedItem>& listed);

// True for the output of list --json rather than a machine description: an object that has
// "items".
bool is_list_document(std::string_view json);

}  // namespace kova_host
