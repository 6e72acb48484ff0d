// What `kovactl set` and `kovactl reset` tell of their writes.
#include "tools/kovactl/write_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "tools/host/export/json_report.h"
#include "tools/host/model/status_text.h"
#include "tools/host/session/worker_link.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/system/typed_number.h"
#include "tools/host/values/shown_value.h"
#include "tools/host/values/typed_quantity.h"
#include "tools/host/values/typed_value.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

bool differs(double a, double b) {
  return std::abs(a - b) > std::max(std::abs(a), std::abs(b)) * 1e-9;
}

bool is_outside(const PlannedWrite& plan) {
  const double value = as_double(plan.number);
  return (plan.item.min && value < *plan.item.min) || (plan.item.max && value > *plan.item.max);
}

// The device decides what it accepts; the published range is what to try next.
std::string refusal_hint(const PlannedWrite& plan) {
  return is_outside(plan) ? ", its range is " + range_text(plan.item) : "";
}

Reading as_reading(const Number& number) {
  return {Reading::State::good, 0,
          std::visit([](auto v) { return decltype(Reading::value)(v); }, number)};
}

// ", the nearest to 9.55 that it can hold", or what was sent if the device made something else of
// it: it may round or limit.
std::string remark(const WriteOutcome& outcome) {
  const double sent = as_double(outcome.plan.number);
  const auto held = outcome.now.number();
  if (held && differs(*held, sent)) {
    return fmt::format(", after {} was sent", short_number(sent));
  }
  const auto typed = parse_quantity(outcome.plan.typed);
  const auto wanted = typed ? in_unit(*typed, outcome.plan.item.unit) : std::nullopt;
  if (wanted && differs(as_double(*wanted), sent)) {
    return fmt::format(", the nearest to {} that it can hold", outcome.plan.typed);
  }
  return "";
}

std::string text_of(const WriteOutcome& outcome, bool dry_run) {
  const Item& item = outcome.plan.item;
  const std::string previous = value_with_unit(item, outcome.previous);
  if (dry_run) {
    return fmt::format("{}  would be set to {}, is {}{}\n", title(item),
                       value_with_unit(item, as_reading(outcome.plan.number)), previous,
                       is_outside(outcome.plan) ? "; its range is " + range_text(item) : "");
  }
  const std::string now = value_with_unit(item, outcome.now);
  return fmt::format("{}  {}{}{}\n", title(item), now, remark(outcome),
                     now == previous ? "" : ", was " + previous);
}

// "; A, B" and so on, with a word in front; "" for none.
std::string fate(std::string_view word, const std::vector<std::string>& names) {
  return names.empty() ? "" : fmt::format("; {}: {}", word, fmt::join(names, ", "));
}

// Of all that was planned, when the last of the outcomes has killed the worker.
std::string fate_of(const std::vector<PlannedWrite>& plans,
                    const std::vector<WriteOutcome>& outcomes) {
  std::vector<std::string> written;
  std::vector<std::string> unknown;
  std::vector<std::string> not_tried;
  for (size_t i = 0; i < plans.size(); ++i) {
    const std::string name = title(plans[i].item);
    if (i >= outcomes.size() || !outcomes[i].is_sent) {
      not_tried.push_back(name);
    } else if (!outcomes[i].is_answered) {
      unknown.push_back(name);
    } else if (outcomes[i].status == 0) {
      written.push_back(name);
    }
  }
  if (written.empty() && unknown.empty()) {
    return "";
  }
  return fate("written for certain", written) +
         fate("sent, and nobody knows whether it was written", unknown) +
         fate("not tried", not_tried);
}

}  // namespace

void add_write_options(CLI::App& command, WriteOptions& options) {
  command.add_flag("--dry-run", options.dry_run, "Check, and tell what would be written");
  command.add_flag("--json", options.json, "Print JSON, with a status for every item");
}

ExitCode write_and_report(const GlobalOptions& globals, const Session& session,
                          const std::vector<PlannedWrite>& plans, const WriteOptions& options) {
  std::vector<WriteOutcome> outcomes;
  bool failed = false;
  bool written = false;
  // One that is refused does not keep those after it from being written.
  for (const PlannedWrite& plan : plans) {
    WriteOutcome& outcome = outcomes.emplace_back();
    try {
      write_item(session, plan, options.dry_run, outcome);
    } catch (const WorkerDeath& death) {
      throw HostError(death.fault(), death.what() + fate_of(plans, outcomes));
    }
    if (outcome.status != 0) {
      failed = true;
      report(fmt::format("cannot write {}: {}{}", title(plan.item), write_failure(outcome.status),
                         refusal_hint(plan)));
      continue;
    }
    written = !options.dry_run;
    if (!outcome.ok()) {
      failed = true;
      report(fmt::format("{} was sent to {}, and nobody knows what became of it: {}",
                         value_with_unit(plan.item, as_reading(plan.number)), title(plan.item),
                         value_with_unit(plan.item, outcome.now)));
    } else if (!options.json) {
      print(text_of(outcome, options.dry_run));
    }
  }
  if (options.json) {
    const JsonPtr document = json_writes(outcomes, options.dry_run, globals.host.simulate);
    print(json_document(document.get(), JsonLayout::indented));
  } else if (globals.host.simulate && written) {
    report("a simulated machine forgets what is written when kovactl ends");
  }
  return failed ? ExitCode::item_failed : ExitCode::success;
}

}  // namespace kovactl
