// `kovactl metrics` and `kovactl senml`: all readings in the formats of other systems.
#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "atomic_file.h"
#include "commands.h"
#include "json_writer.h"
#include "metrics.h"
#include "output.h"
#include "senml.h"

namespace kovactl {
namespace {

// Unix time with milliseconds.
double now_seconds() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count()) /
         1000;
}

SuccessTimes times_in_file(const std::string& file) {
  // Reading a pipe or a device would wait, for ever perhaps, before it is refused as the output.
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    return {};
  }
  std::ifstream stream(file);
  std::ostringstream text;
  text << stream.rdbuf();
  return success_times(text.str());
}

}  // namespace

ExitCode run_metrics(const Request& request) {
  const HostSession session(request.host);
  const std::vector<Item> items =
      Catalogue::from_document(session.capability().get()).distinct_items();
  const Readings readings = read_items(session, items);
  const auto format = request.openmetrics ? MetricsFormat::openmetrics : MetricsFormat::prometheus;
  const bool to_file = !request.output.empty();
  const std::string text = metrics_text(items, readings, format, now_seconds(),
                                        to_file ? times_in_file(request.output) : SuccessTimes());
  if (to_file) {
    replace_file(request.output, text);
  } else {
    print(text);
  }
  return verdict(readings);
}

ExitCode run_senml(const Request& request) {
  if (!request.base_name.empty() && !is_senml_name(request.base_name)) {
    throw CommandError(ExitCode::usage,
                       fmt::format("'{}' is no SenML base name", request.base_name));
  }
  const HostSession session(request.host);
  const std::vector<Item> items =
      Catalogue::from_document(session.capability().get()).distinct_items();
  const Readings readings = read_items(session, items);
  const std::string base = request.base_name.empty() ? machine_base_name() : request.base_name;
  const JsonPtr pack = senml_pack(items, readings, base, now_seconds());
  print(json_document(pack.get(), request.compact ? JsonLayout::one_line : JsonLayout::indented));
  return verdict(readings);
}

}  // namespace kovactl
