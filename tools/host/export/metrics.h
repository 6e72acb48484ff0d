// Readings as metrics for Prometheus and its kin: the same in kovactl's text files and in the
// exporter. docs/metrics.md lists them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/export/earlier_metrics.h"
#include "tools/host/export/exposition.h"
#include "tools/host/values/reading.h"

namespace kova_host {

// The metric that has an item's value. A text may turn out to be a number, and some have none.
Metric value_metric(const Item& item);

// The metrics of the ends of its range; nothing for an item without a range, and for states.
struct RangeMetrics {
  Metric minimum;
  Metric maximum;
};
std::optional<RangeMetrics> range_metrics(const Item& item);

// What is told of every item, in this order, and of the program and its sweeps.
enum ItemStatus { kReadSuccess, kLastSuccess, kInRange };
const std::vector<Metric>& item_status_metrics();
const std::vector<Metric>& sweep_metrics();

// How the sweep went that the readings come from. What is empty is not told.
struct Sweep {
  bool up = false;                             // the device answered
  std::optional<double> time = {};             // Unix time of its end
  std::optional<double> duration = {};         // seconds
  std::optional<double> age = {};              // seconds since its end
  std::optional<double> interval = {};         // seconds from one sweep to the next
  std::optional<uint64_t> number_so_far = {};  // sweeps that have ended
};

// The two parts of a text; end_of_metrics() goes behind them.
std::string sweep_text(const Sweep& sweep, MetricsFormat format);
// Each ID of `items` stands there once. `time` is that of the readings. An item that `earlier`
// knows and `items` lacks counts as one that cannot be read.
std::string items_text(const std::vector<Item>& items, const Readings& readings, double time,
                       const EarlierMetrics& earlier, MetricsFormat format);

}  // namespace kova_host
