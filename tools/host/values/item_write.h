// Writes to items, each with what became of it.
#pragma once

#include <vector>

#include "tools/host/system/typed_number.h"
#include "tools/host/values/reading.h"

namespace kova_host {

// A write that has been checked.
struct PlannedWrite {
  Item item;
  Number number;      // to hand to the module
  std::string typed;  // as the user gave it; "" if nobody typed it
};

struct WriteOutcome {
  PlannedWrite plan;
  Reading previous;     // before the write
  Reading now;          // afterwards, fresh from the device
  uint32_t status = 0;  // the module's answer to the write
  bool dry_run = false;
  bool is_sent = false;      // the module was asked to write
  bool is_answered = false;  // and has answered

  // False for a write that was refused, and for one that nobody can tell of: the module takes
  // writes to hardware that is not there, too, so one counts when the item can be read afterwards.
  bool ok() const { return status == 0 && (dry_run || now.state != Reading::State::failed); }
};

// Writes, with a read before and one after. With `dry_run` nothing is written, and `now` is
// `previous`. Where it throws, because the worker has died over it, `outcome` tells how far it was.
void write_item(const Session& session, const PlannedWrite& plan, bool dry_run,
                WriteOutcome& outcome);

}  // namespace kova_host
