// Readings in the text formats that monitoring systems scrape. Both want all samples of a metric
// in one block behind its HELP and TYPE; a reading that failed has no sample.
#include "tools/host/metrics.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "tools/host/units.h"
#include "tools/host/value_text.h"

namespace kova_host {
namespace {

constexpr std::string_view kLastSuccess = "kova_item_last_success_timestamp_seconds";

constexpr std::string_view kStateHelp =
    "State as a number; 0 is off and 1 is on where no labels are named.";

struct Metric {
  std::string help;
  std::string unit;
  bool info = false;
  std::string samples;
};

// Backslash, quote and line feed, as both formats have it for label values.
std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\n') {
      result += "\\n";
      continue;
    }
    if (c == '\\' || c == '"') {
      result += '\\';
    }
    result += c;
  }
  return result;
}

std::string labels_of(const Item& item) {
  return fmt::format(R"(family="{}",package="{}",item="{}",id="{}")", escaped(item.family),
                     escaped(item.package), escaped(item.name), id_text(item.id));
}

bool is_state(const Item& item) {
  return item.kind == ValueKind::boolean || !item.options.empty();
}

class Exposition {
 public:
  explicit Exposition(MetricsFormat format) : format_(format) {}

  void add(const Item& item, const Reading& reading) {
    if (const auto* text = std::get_if<std::string>(&reading.value)) {
      add_text(item, *text);
    } else if (is_state(item)) {
      add_sample("kova_state", "", kStateHelp, item, plain_value(reading));
    } else {
      add_number(item, plain_value(reading));
    }
  }

  void add_sample(const std::string& name, std::string_view unit, std::string_view help,
                  const Item& item, std::string_view value) {
    Metric& metric = metrics_[name];
    metric.help = help;
    metric.unit = unit;
    metric.samples += fmt::format("{}{{{}}} {}\n", name, labels_of(item), value);
  }

  // The labels of enumerations, one phrase for each option list and the items that have it.
  void explain_states(const std::vector<Item>& items) {
    const auto metric = metrics_.find("kova_state");
    if (metric == metrics_.end()) {
      return;
    }
    std::map<std::string, std::vector<std::string>> names_by_options;
    for (const Item& item : items) {
      if (item.kind == ValueKind::text) {
        continue;
      }
      std::vector<std::string> choices;
      for (const Option& option : item.options) {
        choices.push_back(fmt::format("{}={}", option.value, option.label));
      }
      auto& names = names_by_options[fmt::format("{}", fmt::join(choices, ", "))];
      if (!choices.empty() && std::find(names.begin(), names.end(), item.name) == names.end()) {
        names.push_back(item.name);
      }
    }
    for (const auto& [choices, names] : names_by_options) {
      if (!names.empty()) {
        metric->second.help += fmt::format(" {}: {}.", fmt::join(names, ", "), choices);
      }
    }
  }

  std::string text() const {
    std::string result;
    for (const auto& [name, metric] : metrics_) {
      result += header(name, metric) + metric.samples;
    }
    return result + (format_ == MetricsFormat::openmetrics ? "# EOF\n" : "");
  }

 private:
  void add_text(const Item& item, const std::string& value) {
    Metric& metric = metrics_["kova_item_info"];
    metric.help = "Texts that items report.";
    metric.info = true;
    metric.samples +=
        fmt::format("kova_item_info{{{},value=\"{}\"}} 1\n", labels_of(item), escaped(value));
  }

  void add_number(const Item& item, const std::string& value) {
    if (const Quantity* quantity = find_quantity(item.unit)) {
      add_sample(std::string(quantity->metric), quantity->metric_unit, quantity->help, item, value);
    } else if (item.unit.empty()) {
      add_sample("kova_value", "", "Number without a unit.", item, value);
    } else {
      const std::string word = metric_word(item.unit);
      add_sample("kova_value_" + word, word, "Number in the unit " + item.unit + ".", item, value);
    }
  }

  std::string header(std::string_view name, const Metric& metric) const {
    const bool open = format_ == MetricsFormat::openmetrics;
    // OpenMetrics names an info metric without the suffix that its samples have.
    const bool info = open && metric.info;
    const std::string_view family = info ? name.substr(0, name.rfind("_info")) : name;
    std::string text = fmt::format("# TYPE {} {}\n", family, info ? "info" : "gauge");
    if (open && !metric.unit.empty()) {
      text += fmt::format("# UNIT {} {}\n", family, metric.unit);
    }
    return text + fmt::format("# HELP {} {}\n", family, escaped_help(metric.help));
  }

  // Prometheus leaves quotes in help texts alone, OpenMetrics does not.
  std::string escaped_help(const std::string& help) const {
    std::string text = escaped(help);
    if (format_ == MetricsFormat::prometheus) {
      for (size_t at = text.find("\\\""); at != std::string::npos; at = text.find("\\\"", at)) {
        text.erase(at, 1);
      }
    }
    return text;
  }

  MetricsFormat format_;
  std::map<std::string, Metric> metrics_;
};

std::optional<double> last_success(uint32_t id, const Reading& reading, double now,
                                   const SuccessTimes& earlier) {
  if (reading.state != Reading::State::failed) {
    return now;
  }
  const auto known = earlier.find(id);
  return known == earlier.end() ? std::nullopt : std::optional(known->second);
}

}  // namespace

SuccessTimes success_times(std::string_view text) {
  constexpr std::string_view kId = "id=\"";
  constexpr size_t kIdLength = 10;
  SuccessTimes times;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    // The ID is the last label, so no item's name can stand in for it.
    const size_t id_at = line.rfind(kId);
    const size_t value_at = line.rfind(' ');
    if (!line.starts_with(std::string(kLastSuccess) + '{') || id_at == std::string_view::npos ||
        value_at == std::string_view::npos) {
      continue;
    }
    const auto id = parse_item_id(line.substr(id_at + kId.size(), kIdLength));
    const auto time = parse_number(line.substr(value_at + 1));
    if (id && time) {
      times[*id] = std::visit([](auto v) { return static_cast<double>(v); }, *time);
    }
  }
  return times;
}

std::string metrics_text(const std::vector<Item>& items, const Readings& readings,
                         MetricsFormat format, double now, const SuccessTimes& earlier) {
  Exposition exposition(format);
  for (const Item& item : items) {
    const Reading& reading = readings.at(item.id);
    if (reading.state == Reading::State::good) {
      exposition.add(item, reading);
    }
    const bool success = reading.state != Reading::State::failed;
    exposition.add_sample("kova_item_read_success", "",
                          "1 if the item could be read, or has no value at present; 0 if not.",
                          item, success ? "1" : "0");
    if (const auto time = last_success(item.id, reading, now, earlier)) {
      exposition.add_sample(std::string(kLastSuccess), "seconds",
                            "Unix time at which the item was last read well.", item,
                            fmt::format("{}", *time));
    }
  }
  exposition.explain_states(items);
  return exposition.text();
}

}  // namespace kova_host
