// Readings in the text formats that monitoring systems scrape.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "tools/host/reading.h"

namespace kova_host {

enum class MetricsFormat {
  prometheus,   // Prometheus text format 0.0.4
  openmetrics,  // OpenMetrics 1.0
};

// Unix time at which an item was last read well, by item ID.
using SuccessTimes = std::map<uint32_t, double>;

// The last-success times in a text that metrics_text made before; other lines are passed over.
SuccessTimes success_times(std::string_view text);

// Every reading of `items`, each ID of which stands there once. `now` is the time of the readings;
// `earlier` knows when an item that cannot be read now was read last.
std::string metrics_text(const std::vector<Item>& items, const Readings& readings,
                         MetricsFormat format, double now, const SuccessTimes& earlier);

}  // namespace kova_host
