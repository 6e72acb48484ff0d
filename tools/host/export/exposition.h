// The text formats that monitoring systems scrape: what both ask of names, labels and order.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kova_host {

enum class MetricsFormat {
  prometheus,   // Prometheus text format 0.0.4
  openmetrics,  // OpenMetrics 1.0
};

enum class MetricType { gauge, counter, info, state_set };

// A metric and what is said of it. `name` is that of its samples: a counter's ends in "_total",
// an info's in "_info".
struct Metric {
  std::string name;
  MetricType type = MetricType::gauge;
  std::string unit;  // the base unit at the end of the name; "" for none
  std::string help;
};

// "label=\"value\"", the value escaped.
std::string metric_label(std::string_view label, std::string_view value);

// Collects samples and writes them as both formats want it: all of a metric in one block.
class Exposition {
 public:
  explicit Exposition(MetricsFormat format) : format_(format) {}

  // `labels` are joined by commas; "" for none.
  void add(const Metric& metric, std::string_view labels, double value);

  // Metrics by name; OpenMetrics' end mark is for the caller, who may have more.
  std::string text() const;

 private:
  struct Block {
    std::string header;
    std::string samples;
  };

  std::string header(const Metric& metric) const;

  MetricsFormat format_;
  std::map<std::string, Block> blocks_;
};

// What stands at the end of the whole text.
std::string_view end_of_metrics(MetricsFormat format);

}  // namespace kova_host
