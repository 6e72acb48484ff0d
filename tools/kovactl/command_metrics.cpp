// `kovactl metrics`: all readings for Prometheus and its kin.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "tools/host/export/metrics.h"
#include "tools/host/system/atomic_file.h"
#include "tools/host/system/unix_time.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

struct MetricsOptions {
  Selection selection;
  bool openmetrics = false;
  std::string output = "-";  // file to replace; "-" for stdout
};

EarlierMetrics metrics_in_file(const std::string& file) {
  // Reading a pipe or a device would wait, for ever perhaps, before it is refused as the output.
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    return {};
  }
  std::ifstream stream(file);
  std::ostringstream text;
  text << stream.rdbuf();
  return earlier_metrics(text.str());
}

// Takes what a text knew and `items` lacks into them, as missing.
void add_missing(const EarlierMetrics& earlier, std::vector<Item>& items) {
  std::set<uint32_t> present;
  for (const Item& item : items) {
    present.insert(item.id);
  }
  for (const auto& [id, labels] : earlier.labels) {
    if (!present.contains(id)) {
      Item item;
      item.id = id;
      item.family = label_value(labels, "family");
      item.package = label_value(labels, "package");
      item.name = label_value(labels, "item");
      item.missing = true;
      items.push_back(std::move(item));
    }
  }
}

// What is not selected is not missed either.
void keep_selected(const std::vector<Item>& items, EarlierMetrics& earlier) {
  std::set<uint32_t> selected;
  for (const Item& item : items) {
    selected.insert(item.id);
  }
  std::erase_if(earlier.labels, [&](const auto& entry) { return !selected.contains(entry.first); });
}

// Without a device nothing of what the file told is true any more: it tells that.
void replace_with_failure(const MetricsOptions& options, const EarlierMetrics& earlier) {
  const double now = unix_time();
  const auto format = options.openmetrics ? MetricsFormat::openmetrics : MetricsFormat::prometheus;
  replace_file(options.output,
               fmt::format("{}{}{}", sweep_text({.up = false, .time = now}, format),
                           items_text({}, {}, now, earlier, format), end_of_metrics(format)));
}

// What `ask` gives of the device; if that is not there, or dies, the file tells it.
template <typename Ask>
auto asked_or_told(const MetricsOptions& options, const EarlierMetrics& earlier, const Ask& ask) {
  try {
    return ask();
  } catch (const HostError& error) {
    if (options.output != "-" && error.fault() == Fault::no_device) {
      replace_with_failure(options, earlier);
    }
    throw;
  }
}

ExitCode run_metrics(const GlobalOptions& globals, const MetricsOptions& options) {
  if (options.output.empty()) {
    throw HostError(Fault::usage, "--output needs the name of a file, or - for stdout");
  }
  const bool to_file = options.output != "-";
  auto earlier = to_file ? metrics_in_file(options.output) : EarlierMetrics();
  const auto session = asked_or_told(options, earlier, [&] { return open_session(globals); });
  std::vector<Item> known = Inventory::of(*session).items();
  add_missing(earlier, known);
  const std::vector<Item> items = select_distinct(known, options.selection);
  keep_selected(items, earlier);
  std::vector<Item> present;
  std::copy_if(items.begin(), items.end(), std::back_inserter(present),
               [](const Item& item) { return !item.missing; });
  const double began = unix_time();
  const Readings readings =
      asked_or_told(options, earlier, [&] { return read_with_progress(*session, items); });
  const double now = unix_time();
  const auto format = options.openmetrics ? MetricsFormat::openmetrics : MetricsFormat::prometheus;
  const Sweep sweep{.up = true, .time = now, .duration = std::max(0.0, now - began)};
  const std::string text =
      fmt::format("{}{}{}", sweep_text(sweep, format),
                  items_text(present, readings, now, earlier, format), end_of_metrics(format));
  if (to_file) {
    replace_file(options.output, text);
  } else {
    print(text);
  }
  return verdict(items, readings);
}

}  // namespace

void add_metrics(CommandLine& line) {
  auto options = std::make_shared<MetricsOptions>();
  CLI::App& command =
      line.add({"metrics", "Print all readings in Prometheus text format",
                "kovactl metrics --output /var/lib/prometheus/node-exporter/kova.prom"},
               [options](const GlobalOptions& globals) { return run_metrics(globals, *options); });
  add_selection(command, options->selection);
  command.add_flag("--openmetrics", options->openmetrics, "Print OpenMetrics 1.0 instead");
  command
      .add_option("--output", options->output,
                  "Replace this file, as a whole or not at all; - for stdout")
      ->type_name("FILE");
}

}  // namespace kovactl
