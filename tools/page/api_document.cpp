// The bodies of /api/v1. Items have the form that kovactl's --json gives them.
#include "tools/page/api_document.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <set>

#include "include/kova_iot.h"
#include "tools/host/export/json_report.h"
#include "tools/host/judgements/finding_json.h"
#include "tools/host/judgements/judge.h"
#include "tools/host/model/status_text.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/values/shown_value.h"
#include "tools/host/values/units.h"

namespace kova_page {
namespace {

using kova_host::json_text;
using kova_host::JsonPtr;
using kova_host::own;
using kova_host::put;
using kova_host::Reading;

// Times to the microsecond: more digits would only be noise.
JsonPtr json_seconds(const std::optional<double>& seconds) {
  return seconds ? own(json_real(std::round(*seconds * 1e6) / 1e6)) : own(json_null());
}

JsonPtr json_sweep(const SweepState& state) {
  JsonPtr sweep = own(json_object());
  put(sweep, "number", own(json_integer(static_cast<json_int_t>(state.number))));
  put(sweep, "time", json_seconds(state.time));
  put(sweep, "age", json_seconds(state.age));
  put(sweep, "duration", json_seconds(state.duration));
  put(sweep, "interval", own(json_real(state.interval)));
  put(sweep, "pace", json_seconds(state.pace()));
  put(sweep, "up", own(json_boolean(state.up)));
  if (!state.up) {
    put(sweep, "error", json_text(state.error));
  }
  put(sweep, "list", own(json_integer(state.list)));
  return sweep;
}

JsonPtr json_machine(const Machine& machine) {
  JsonPtr object = own(json_object());
  put(object, "name", json_text(machine.name));
  put(object, "simulated",
      machine.simulated.empty() ? own(json_false()) : json_text(machine.simulated));
  return object;
}

// What people know the module's spellings as, where it is something else.
JsonPtr json_units() {
  JsonPtr object = own(json_object());
  for (const kova_host::Unit& unit : kova_host::units()) {
    if (unit.shown != unit.published) {
      put(object, std::string(unit.published).c_str(), json_text(unit.shown));
    }
  }
  return object;
}

JsonPtr json_failure(const Reading& reading) {
  JsonPtr failure = own(json_object());
  put(failure, "failure", json_text(kova_host::failure_reason(reading)));
  kova_host::put_status(failure, reading.status);
  return failure;
}

std::string one_line(const JsonPtr& document) {
  return kova_host::json_document(document.get(), kova_host::JsonLayout::one_line);
}

void append_numbers(std::string& text, const std::vector<double>& numbers) {
  const char* separator = "";
  text += '[';
  for (const double number : numbers) {
    if (std::isnan(number)) {
      fmt::format_to(std::back_inserter(text), "{}null", separator);
    } else {
      fmt::format_to(std::back_inserter(text), "{}{:.15g}", separator, number);
    }
    separator = ",";
  }
  text += ']';
}

// What needs attention on `items`, judged with all that the machine has.
JsonPtr json_findings_on(const Snapshot& snapshot, const std::vector<kova_host::Item>& items) {
  std::set<uint32_t> wanted;
  for (const kova_host::Item& item : items) {
    wanted.insert(item.id);
  }
  auto findings =
      kova_host::judge(snapshot.list->items, snapshot.readings, snapshot.list->thresholds);
  std::erase_if(findings, [&wanted](const kova_host::Finding& finding) {
    return !wanted.contains(finding.id);
  });
  return kova_host::json_findings(findings);
}

}  // namespace

ItemsText items_text(const Snapshot& snapshot, const std::vector<kova_host::Item>& items) {
  JsonPtr array = own(json_array());
  ItemsText result;
  for (const kova_host::Item& item : items) {
    const Reading& reading = snapshot.readings.at(item.id);
    result.all_read = result.all_read && reading.state != Reading::State::failed;
    kova_host::append(array, kova_host::json_item(item, reading));
  }
  result.json = one_line(array);
  result.json.erase(result.json.find_last_not_of('\n') + 1);
  result.json += R"(,"findings":)" + one_line(json_findings_on(snapshot, items));
  return result;
}

std::string items_head(const Machine& machine, bool all_read, const SweepState& state) {
  JsonPtr document = own(json_object());
  put(document, "ok", own(json_boolean(all_read && state.up)));
  put(document, "machine", json_machine(machine));
  put(document, "release", json_text(KOVA_IOT_VERSION));
  put(document, "sweep", json_sweep(state));
  put(document, "units", json_units());
  std::string text = one_line(document);
  text.resize(text.rfind('}'));
  return text + R"(,"items":)";
}

std::string items_document(const Machine& machine, const ItemsText& items,
                           const SweepState& state) {
  return fmt::format("{}{}}}", items_head(machine, items.all_read, state), items.json);
}

std::string history_head(const SweepState& state) {
  std::string text = R"({"ok":true,"sweep":)" + one_line(json_sweep(state));
  text.back() = ',';
  return text;
}

// Written by hand: a chart of many items has more numbers than are worth an object each.
std::string history_text(const RecentSamples::Extract& extract) {
  std::string text = R"("times":)";
  append_numbers(text, extract.times);
  text += R"(,"series":{)";
  const char* separator = "";
  for (const auto& [id, numbers] : extract.series) {
    fmt::format_to(std::back_inserter(text), R"({}"{}":)", separator, kova_host::id_text(id));
    append_numbers(text, numbers);
    separator = ",";
  }
  return text + "}}\n";
}

std::string history_document(const RecentSamples::Extract& extract, const SweepState& state) {
  return history_head(state) + history_text(extract);
}

std::string sweep_event(const Snapshot& snapshot, const SweepState& state) {
  JsonPtr values = own(json_array());
  JsonPtr failed = own(json_object());
  for (const kova_host::Item& item : snapshot.list->items) {
    const Reading& reading = snapshot.readings.at(item.id);
    if (reading.state == Reading::State::failed) {
      put(failed, std::to_string(json_array_size(values.get())).c_str(), json_failure(reading));
    }
    kova_host::append(values, kova_host::json_value(reading));
  }
  JsonPtr data = own(json_object());
  put(data, "sweep", json_sweep(state));
  put(data, "values", std::move(values));
  put(data, "failed", std::move(failed));
  put(data, "findings", json_findings_on(snapshot, snapshot.list->items));
  return fmt::format("event: sweep\nid: {}\ndata: {}\n", snapshot.number, one_line(data));
}

std::string status_event(const SweepState& state) {
  JsonPtr data = own(json_object());
  put(data, "sweep", json_sweep(state));
  return fmt::format("event: status\ndata: {}\n", one_line(data));
}

}  // namespace kova_page
