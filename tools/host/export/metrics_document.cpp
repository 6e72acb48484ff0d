// Prints docs/metrics.md: every metric, and which items' values it has.
#include <fmt/format.h>

#include <map>
#include <string>
#include <vector>

#include "tools/host/export/metrics.h"
#include "tools/host/model/item_data.h"

namespace {

using kova_host::Item;
using kova_host::Metric;
using kova_host::MetricType;

constexpr const char* kIntroduction = R"(# Metrics

<!-- Made by scripts/items.sh from the metrics and the catalogues; do not edit. -->

What `kovactl metrics` writes and `kova-exporter` serves at `/metrics`, the same in both. Names
follow Prometheus' rules: base units, one metric a quantity. As OpenMetrics they have their types
too: info and state sets, which Prometheus' own text format calls gauges.

- **Labels** of every metric of an item: `family`, `package`, `item`, `id`. They are the same on all
  metrics of an item, so that comparisons need no `on()`:
  `kova_temperature_celsius > kova_temperature_maximum_celsius`.
- **Settings** (`kova_setting_...`) and **factory defaults** (`kova_default_...`) stand apart from
  readings: an alert on a voltage does not see a cut-off voltage.
- **States** are state sets: one series a state with the metric's own name as label, 1 for the
  present state and 0 for the others: `kova_state{item="IGN status",kova_state="ON"} 1`. A state that
  is a text without a list of its choices has one series, 1, for the present one; one that is a
  number in a text (the battery's `ErrorCodes`) is a `kova_code`.
- **Ranges** are the device's own advice. `kova_item_in_range == 0` is one alert for all.
- An item that cannot be read has no value, but `kova_item_read_success` 0 and the time of its last
  success. One without a value at present (the time to empty of an idle battery) is a success.
- Names in braces stand for the number of the port or module: `PoE {n} voltage`.

)";

std::string_view type_name(MetricType type) {
  switch (type) {
    case MetricType::counter:
      return "counter";
    case MetricType::info:
      return "info";
    case MetricType::state_set:
      return "state set";
    default:
      return "gauge";
  }
}

// What stands between two pipes of a table.
std::string cell(std::string text) {
  for (size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + 2)) {
    text.insert(at, 1, '\\');
  }
  return text;
}

void print_metrics(const char* heading, const std::vector<Metric>& metrics) {
  fmt::print("## {}\n\n| Metric | Type | Meaning |\n|---|---|---|\n", heading);
  for (const Metric& metric : metrics) {
    fmt::print("| `{}` | {} | {} |\n", metric.name, type_name(metric.type), cell(metric.help));
  }
  fmt::print("\n");
}

struct Row {
  Metric metric;
  bool has_range = false;
  std::map<std::string, std::vector<std::string>> items;  // names by family
};

std::map<std::string, Row> rows_of_all_items() {
  std::map<std::string, Row> rows;
  for (const auto& family : kova_host::item_data()) {
    for (const auto& package : family.packages) {
      for (Item item : package.items) {
        if (item.name == "ErrorCodes") {  // a number in a text, which only its reading tells
          item.kind = kova_host::ValueKind::integer;
        }
        const Metric metric = kova_host::value_metric(item);
        Row& row = rows[metric.name];
        row.metric = metric;
        row.has_range = row.has_range || kova_host::range_metrics(item).has_value();
        row.items[family.name].push_back(item.name);
      }
    }
  }
  return rows;
}

void print_values() {
  fmt::print(
      "## Values of items\n\nWhere the range column says so, the ends of the published range are "
      "metrics as well,\n`minimum` or `maximum` before the unit: "
      "`kova_temperature_maximum_celsius`.\n\n"
      "| Metric | Type | Range | Meaning | Items |\n|---|---|---|---|---|\n");
  for (const auto& [name, row] : rows_of_all_items()) {
    std::string items;
    for (const auto& [family, names] : row.items) {
      items +=
          fmt::format("{}**{}**: {}", items.empty() ? "" : "; ", family, fmt::join(names, ", "));
    }
    fmt::print("| `{}` | {} | {} | {} | {} |\n", name, type_name(row.metric.type),
               row.has_range ? "yes" : "", cell(row.metric.help), cell(items));
  }
}

}  // namespace

int main() {
  fmt::print("{}", kIntroduction);
  print_metrics("Program and sweep", kova_host::sweep_metrics());
  fmt::print(
      "`kova_up` of the exporter falls to 0 three intervals after the last sweep (later on a slow\n"
      "bus), without a device, and when no item can be read; that of `kovactl metrics --output` "
      "is\n"
      "0 without a device that answers. Age, interval and number of the sweeps are the exporter's\n"
      "only.\n\n");
  print_metrics("Every item", kova_host::item_status_metrics());
  print_values();
}
