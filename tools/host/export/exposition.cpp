// The text formats that monitoring systems scrape.
#include "tools/host/export/exposition.h"

#include <fmt/format.h>

namespace kova_host {
namespace {

std::string escaped(std::string_view text, bool quotes) {
  std::string result;
  for (const char c : text) {
    if (c == '\n') {
      result += "\\n";
      continue;
    }
    if (c == '\\' || (c == '"' && quotes)) {
      result += '\\';
    }
    result += c;
  }
  return result;
}

std::string_view type_name(MetricType type, bool openmetrics) {
  switch (type) {
    case MetricType::counter:
      return "counter";
    case MetricType::info:
      return openmetrics ? "info" : "gauge";
    case MetricType::state_set:
      return openmetrics ? "stateset" : "gauge";
    default:
      return "gauge";
  }
}

}  // namespace

std::string metric_label(std::string_view label, std::string_view value) {
  return fmt::format("{}=\"{}\"", label, escaped(value, true));
}

void Exposition::add(const Metric& metric, std::string_view labels, double value) {
  Block& block = blocks_[metric.name];
  if (block.header.empty()) {
    block.header = header(metric);
  }
  const std::string set = labels.empty() ? "" : fmt::format("{{{}}}", labels);
  block.samples += fmt::format("{}{} {:.15g}\n", metric.name, set, value);
}

std::string Exposition::text() const {
  std::string result;
  for (const auto& [name, block] : blocks_) {
    result += block.header + block.samples;
  }
  return result;
}

std::string Exposition::header(const Metric& metric) const {
  const bool open = format_ == MetricsFormat::openmetrics;
  // OpenMetrics names a family without the suffix that its samples have.
  std::string_view family = metric.name;
  const bool has_suffix = metric.type == MetricType::info || metric.type == MetricType::counter;
  if (open && has_suffix) {
    family = family.substr(0, family.rfind('_'));
  }
  std::string text = fmt::format("# TYPE {} {}\n", family, type_name(metric.type, open));
  if (open && !metric.unit.empty()) {
    text += fmt::format("# UNIT {} {}\n", family, metric.unit);
  }
  // Prometheus leaves quotes in help texts alone, OpenMetrics does not.
  return text + fmt::format("# HELP {} {}\n", family, escaped(metric.help, open));
}

std::string_view end_of_metrics(MetricsFormat format) {
  return format == MetricsFormat::openmetrics ? "# EOF\n" : "";
}

}  // namespace kova_host
