// Writes to items, each with what became of it.
#include "tools/host/values/item_write.h"

namespace kova_host {

void write_item(const Session& session, const PlannedWrite& plan, bool dry_run,
                WriteOutcome& outcome) {
  outcome.plan = plan;
  outcome.dry_run = dry_run;
  outcome.previous = read_item(session, plan.item);
  if (dry_run) {
    outcome.now = outcome.previous;
    return;
  }
  outcome.is_sent = true;
  outcome.status = session.write(plan.item.id, plan.number);
  outcome.is_answered = true;
  outcome.now = read_item(session, plan.item);
}

}  // namespace kova_host
