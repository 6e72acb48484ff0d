// Readings as metrics, after Prometheus' naming rules: one metric a quantity, in base units;
// settings and factory defaults apart from readings; states as state sets.
#include "tools/host/export/metrics.h"

#include <fmt/format.h>

#include <algorithm>

#include "include/kova_iot.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/system/typed_number.h"
#include "tools/host/values/number_of.h"
#include "tools/host/values/units.h"

namespace kova_host {
namespace {

enum class Subject {
  state,     // one of the item's options, or on and off
  word,      // a state that the device tells as a text, or as a number in a text
  identity,  // a text that does not change
  quantity,
  code,  // a number without a unit
};

// Settings and defaults have metrics of their own: an alert on a reading must not see them.
struct Group {
  Role role;
  std::string_view prefix;
  std::string_view help;
};
constexpr Group kGroups[] = {
    {Role::setting, "kova_setting_", "Setting: "},
    {Role::factory_default, "kova_default_", "Factory default: "},
    {Role::reading, "kova_", ""},
};

const Group& group_of(const Item& item) {
  return *std::find_if(std::begin(kGroups), std::end(kGroups) - 1,
                       [&item](const Group& group) { return item.facts.role == group.role; });
}

Subject subject_of(const Item& item) {
  if (item.kind == ValueKind::boolean || !item.options.empty()) {
    return Subject::state;
  }
  if (!item.unit.empty()) {
    return Subject::quantity;
  }
  if (item.kind == ValueKind::text) {
    return item.facts.role == Role::state ? Subject::word : Subject::identity;
  }
  return Subject::code;
}

// Everything but lower-case letters and digits made "_".
std::string metric_word(std::string_view unit) {
  std::string word;
  for (const char c : unit) {
    const bool upper = c >= 'A' && c <= 'Z';
    const bool keep = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    word += upper ? static_cast<char>(c - 'A' + 'a') : keep ? c : '_';
  }
  return word;
}

// `part` is "", or "minimum" or "maximum" of the range.
Metric quantity_metric(const Item& item, std::string_view part) {
  const Unit* unit = find_unit(item.unit);
  const Group& group = group_of(item);
  Metric metric;
  metric.name = group.prefix;
  if (item.unit.empty()) {
    metric.name += "code";
    metric.help = "Number that stands for something, such as a class or a set of bits.";
  } else if (unit == nullptr) {
    metric.name += "other";
    metric.unit = metric_word(item.unit);
    metric.help = fmt::format("Number in the unit {}.", item.unit);
  } else {
    metric.name += unit->quantity->name;
    metric.unit = unit->quantity->unit;
    metric.help = unit->quantity->help;
  }
  for (const std::string_view word : {part, std::string_view(metric.unit)}) {
    metric.name += word.empty() ? "" : "_" + std::string(word);
  }
  metric.help = std::string(group.help) + metric.help;
  return metric;
}

Metric range_metric(const Item& item, std::string_view part, std::string_view which) {
  Metric metric = quantity_metric(item, part);
  metric.help = fmt::format("{} value of the range that the device publishes for {}.", which,
                            quantity_metric(item, "").name);
  return metric;
}

Metric state_metric(const Item& item) {
  const Group& group = group_of(item);
  return {fmt::format("{}state", group.prefix), MetricType::state_set, "",
          fmt::format("{}State: 1 for the present one, 0 for the others.", group.help)};
}

std::string labels_of(const Item& item) {
  return fmt::format("{},{},{},{}", metric_label("family", item.family),
                     metric_label("package", item.package), metric_label("item", item.name),
                     metric_label("id", id_text(item.id)));
}

std::vector<Option> states_of(const Item& item) {
  static const std::vector<Option> switch_states = {{0, "off"}, {1, "on"}};
  return item.options.empty() ? switch_states : item.options;
}

// Texts such as "Vehicle mode" are labels themselves.
bool is_present(const Option& state, const Reading& reading) {
  const auto* integer = std::get_if<int64_t>(&reading.value);
  const auto* text = std::get_if<std::string>(&reading.value);
  return (integer != nullptr && *integer == state.value) ||
         (text != nullptr && *text == state.label);
}

void add_states(Exposition& exposition, const Item& item, const Reading& reading,
                const std::string& labels) {
  const Metric metric = state_metric(item);
  for (const Option& state : states_of(item)) {
    exposition.add(metric, labels + "," + metric_label(metric.name, state.label),
                   is_present(state, reading) ? 1 : 0);
  }
}

void add_range(Exposition& exposition, const Item& item, const std::string& labels) {
  if (const auto range = range_metrics(item)) {
    if (item.min) {
      exposition.add(range->minimum, labels, in_base_unit(item.unit, *item.min));
    }
    if (item.max) {
      exposition.add(range->maximum, labels, in_base_unit(item.unit, *item.max));
    }
  }
}

void add_text(Exposition& exposition, const Metric& metric, std::string_view label,
              const Reading& reading, const std::string& labels) {
  if (const auto* text = std::get_if<std::string>(&reading.value)) {
    exposition.add(metric, labels + "," + metric_label(label, field_text(*text)), 1);
  }
}

void add_number(Exposition& exposition, const Item& item, std::optional<double> number,
                const std::string& labels) {
  if (number) {
    exposition.add(quantity_metric(item, ""), labels, in_base_unit(item.unit, *number));
  }
}

void add_value(Exposition& exposition, const Item& item, const Reading& reading,
               const std::string& labels) {
  const auto code = number_in(reading);
  switch (subject_of(item)) {
    case Subject::state:
      return add_states(exposition, item, reading, labels);
    case Subject::word:
      return code ? add_number(exposition, item, code, labels)
                  : add_text(exposition, value_metric(item), value_metric(item).name, reading,
                             labels);
    case Subject::identity:
      return add_text(exposition, value_metric(item), "value", reading, labels);
    default:
      return add_number(exposition, item, published_value(item, reading), labels);
  }
}

void add_status(Exposition& exposition, const std::string& labels, bool success,
                std::optional<double> last_success) {
  exposition.add(item_status_metrics()[kReadSuccess], labels, success ? 1 : 0);
  if (last_success) {
    exposition.add(item_status_metrics()[kLastSuccess], labels, *last_success);
  }
}

std::optional<double> last_success(const EarlierMetrics& earlier, uint32_t id) {
  const auto known = earlier.last_success.find(id);
  return known == earlier.last_success.end() ? std::nullopt : std::optional(known->second);
}

void add_item(Exposition& exposition, const Item& item, const Reading& reading, double time,
              const EarlierMetrics& earlier) {
  const std::string labels = labels_of(item);
  const bool success = reading.state != Reading::State::failed;
  if (reading.state == Reading::State::good) {
    add_value(exposition, item, reading, labels);
  }
  add_range(exposition, item, labels);
  add_status(exposition, labels, success, success ? time : last_success(earlier, item.id));
  if (reading.number() && (item.min || item.max)) {
    exposition.add(item_status_metrics()[kInRange], labels, out_of_range(item, reading) ? 0 : 1);
  }
}

enum SweepStatus { kUp, kBuild, kDuration, kTime, kAge, kInterval, kSweeps };

}  // namespace

Metric value_metric(const Item& item) {
  switch (subject_of(item)) {
    case Subject::state:
    case Subject::word:
      return state_metric(item);
    case Subject::identity:
      return {"kova_identity_info", MetricType::info, "",
              "What the machine is made of; the texts do not change while it runs."};
    default:
      return quantity_metric(item, "");
  }
}

std::optional<RangeMetrics> range_metrics(const Item& item) {
  // A factory default has the range of its setting.
  if (subject_of(item) != Subject::quantity || item.facts.role == Role::factory_default ||
      (!item.min && !item.max)) {
    return std::nullopt;
  }
  return RangeMetrics{range_metric(item, "minimum", "Least"),
                      range_metric(item, "maximum", "Greatest")};
}

const std::vector<Metric>& item_status_metrics() {
  static const std::vector<Metric> metrics = {
      {"kova_item_read_success", MetricType::gauge, "",
       "1 if the item could be read, or has no value at present; 0 if not."},
      {"kova_item_last_success_timestamp_seconds", MetricType::gauge, "seconds",
       "Unix time at which the item was last read well."},
      {"kova_item_in_range", MetricType::gauge, "",
       "1 if the value lies in the item's published range; 0 if not."},
  };
  return metrics;
}

const std::vector<Metric>& sweep_metrics() {
  static const std::vector<Metric> metrics = {
      {"kova_up", MetricType::gauge, "", "1 if the device answers and the readings are fresh."},
      {"kova_build_info", MetricType::info, "", "Release of the program that read the device."},
      {"kova_sweep_duration_seconds", MetricType::gauge, "seconds",
       "Time that the last sweep over all items took; it grows on a busy bus."},
      {"kova_sweep_timestamp_seconds", MetricType::gauge, "seconds",
       "Unix time at which the last sweep ended."},
      {"kova_sweep_age_seconds", MetricType::gauge, "seconds",
       "Time since the last sweep ended, by the machine's own clock."},
      {"kova_sweep_interval_seconds", MetricType::gauge, "seconds",
       "Time from one sweep to the next, as configured."},
      {"kova_sweeps_total", MetricType::counter, "", "Sweeps that have ended since the start."},
  };
  return metrics;
}

std::string sweep_text(const Sweep& sweep, MetricsFormat format) {
  const auto& metrics = sweep_metrics();
  Exposition exposition(format);
  exposition.add(metrics[kUp], "", sweep.up ? 1 : 0);
  exposition.add(metrics[kBuild], metric_label("version", KOVA_IOT_VERSION), 1);
  const std::pair<SweepStatus, std::optional<double>> told[] = {{kDuration, sweep.duration},
                                                                {kTime, sweep.time},
                                                                {kAge, sweep.age},
                                                                {kInterval, sweep.interval},
                                                                {kSweeps, sweep.number_so_far}};
  for (const auto& [metric, value] : told) {
    if (value) {
      exposition.add(metrics[metric], "", *value);
    }
  }
  return exposition.text();
}

std::string items_text(const std::vector<Item>& items, const Readings& readings, double time,
                       const EarlierMetrics& earlier, MetricsFormat format) {
  Exposition exposition(format);
  auto gone = earlier.labels;
  for (const Item& item : items) {
    add_item(exposition, item, readings.at(item.id), time, earlier);
    gone.erase(item.id);
  }
  for (const auto& [id, labels] : gone) {
    add_status(exposition, labels, false, last_success(earlier, id));
  }
  return exposition.text();
}

}  // namespace kova_host
