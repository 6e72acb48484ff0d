// The exporter's command line, in the manner of Prometheus exporters.
#include "tools/exporter/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "include/kova_iot.h"
#include "tools/exporter/server.h"
#include "tools/exporter/site.h"
#include "tools/host/system/duration.h"
#include "tools/host/system/errors.h"
#include "tools/host/system/typed_number.h"

namespace kova_exporter {
namespace {

constexpr const char* kDefaultAddress = "127.0.0.1:9848";

// Texts as typed; they are checked here rather than by the parser, whose numbers are laxer.
struct RawTexts {
  std::string listen_address = kDefaultAddress;
  std::string interval = "5s";
  std::string connections_per_address = "16";
  std::string rules_file;
  std::string log_level = "info";
  std::string machine;
};

double checked_interval(std::string_view text) {
  constexpr std::chrono::milliseconds kShortest(100);
  try {
    return std::chrono::duration<double>(
               kova_host::checked_duration(text, "interval", kShortest, std::chrono::hours(1)))
        .count();
  } catch (const kova_host::HostError& error) {
    throw std::invalid_argument(fmt::format("--interval: {}", error.what()));
  }
}

unsigned checked_connections(std::string_view text) {
  const auto number = kova_host::parse_number(text);
  const int64_t* count = number ? std::get_if<int64_t>(&*number) : nullptr;
  if (count == nullptr || *count < 1 || *count > ServerLimits().connections) {
    throw std::invalid_argument(
        fmt::format("--web.connections-per-address: '{}' is no number of 1 to {}", text,
                    ServerLimits().connections));
  }
  return static_cast<unsigned>(*count);
}

ListenAddress checked_address(const std::string& text) {
  try {
    return parse_listen_address(text);
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument(fmt::format("--web.listen-address: {}", error.what()));
  }
}

kova_host::RulesFile checked_rules(const std::string& file) {
  try {
    return file.empty() ? kova_host::RulesFile() : kova_host::read_rules_file(file);
  } catch (const kova_host::HostError& error) {
    throw std::invalid_argument(fmt::format("--rules.file: {}", error.what()));
  }
}

Options checked(const RawTexts& raw, Options options) {
  options.listen_address = checked_address(raw.listen_address);
  options.connections_per_address = checked_connections(raw.connections_per_address);
  options.interval = checked_interval(raw.interval);
  options.rules = checked_rules(raw.rules_file);
  const auto level = parse_log_level(raw.log_level);
  if (!level) {
    throw std::invalid_argument(
        fmt::format("--log.level: '{}' is none of debug, info, warn, error", raw.log_level));
  }
  options.log_level = *level;
  if (options.host.simulate) {
    options.simulated =
        raw.machine.empty() ? "built-in" : std::filesystem::path(raw.machine).stem().string();
  }
  return options;
}

std::string paths() {
  std::string lines;
  for (const Site::Route& route : Site::routes()) {
    lines += fmt::format("  {:<35} {}\n", fmt::format("{}{}", route.path, route.rest), route.text);
  }
  return lines;
}

void add_options(CLI::App& app, RawTexts& raw, Options& options) {
  app.add_option("--web.listen-address", raw.listen_address,
                 "Where to serve: 127.0.0.1:PORT, [::1]:PORT, [::]:PORT for every address of the "
                 "machine, or unix:/PATH")
      ->type_name("ADDRESS")
      ->capture_default_str();
  app.add_option("--web.connections-per-address", raw.connections_per_address,
                 "Connections that one address may hold; beyond them its longest idle ones are "
                 "ended")
      ->type_name("NUMBER")
      ->capture_default_str();
  app.add_option("--interval", raw.interval, "Time from one sweep over all items to the next")
      ->type_name("TIME")
      ->capture_default_str();
  app.add_option("--module", options.host.module, "Load this module instead of searching for it")
      ->type_name("PATH");
  app.add_option("--simulate", raw.machine,
                 "Show a simulated machine: the built-in one, or the one described in this file, "
                 "or a shipped one by its name")
      ->type_name("[MACHINE]")
      ->expected(0, 1);
  app.add_option("--rules.file", raw.rules_file,
                 "Change the rules of what needs attention, as kovactl check --rules does")
      ->type_name("FILE");
  app.add_option("--log.level", raw.log_level,
                 "Least level that is logged: debug, info, warn, error")
      ->type_name("LEVEL")
      ->capture_default_str();
  app.set_version_flag("--version", "kova-exporter " KOVA_IOT_VERSION,
                       "Print the version and exit");
  app.footer(fmt::format(
      "Paths:\n{}\nExit codes: 0 ended by a signal, 1 cannot serve, 2 wrong arguments.\n"
      "Example:\n  kova-exporter --simulate",
      paths()));
}

}  // namespace

ParsedOptions parse_options(std::vector<std::string> arguments) {
  ParsedOptions parsed;
  RawTexts raw;
  CLI::App app(
      "Serves this machine's hardware-monitoring items: a live page, Prometheus metrics, "
      "JSON.",
      "kova-exporter");
  add_options(app, raw, parsed.options);
  std::reverse(arguments.begin(), arguments.end());  // the order that the parser takes
  try {
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    if (app.exit(error, text, text) != 0) {
      throw std::invalid_argument(fmt::format("{} (see kova-exporter --help)", error.what()));
    }
    parsed.answer = text.str();
    return parsed;
  }
  parsed.options.host.simulate = app.count("--simulate") > 0;
  if (!raw.machine.empty()) {
    parsed.options.host.machine = raw.machine;
  }
  parsed.options = checked(raw, std::move(parsed.options));
  return parsed;
}

}  // namespace kova_exporter
