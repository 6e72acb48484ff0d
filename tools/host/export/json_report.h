// Results and errors as JSON documents, for scripts.
#pragma once

#include <vector>

#include "tools/host/system/errors.h"
#include "tools/host/values/item_write.h"

namespace kova_host {

// The value of a good reading, else null.
JsonPtr json_value(const Reading& reading);

enum class Detail { full, brief };

// One item: where it stands, what it is, its value or null, and the status of the read.
// `brief` leaves out what does not change from sample to sample.
JsonPtr json_item(const Item& item, const Reading& reading, Detail detail = Detail::full);

// {"ok": ..., "items": [...]}; "ok" is false when a read failed.
JsonPtr json_items(const std::vector<Item>& items, const Readings& readings,
                   Detail detail = Detail::full);

// {"ok": ..., "dry_run": ..., "simulated": ..., "items": [...]}; "ok" is false when a write failed.
JsonPtr json_writes(const std::vector<WriteOutcome>& outcomes, bool dry_run, bool simulated);

// {"ok": false, "error": {...}}
JsonPtr json_error(const HostError& error);

// Sets "status" (the name, or null for a code of the device library's own) and "code".
void put_status(const JsonPtr& object, uint32_t status);

}  // namespace kova_host
