// The exporter's command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/exporter/listen_address.h"
#include "tools/exporter/log.h"
#include "tools/host/judgements/rules_file.h"
#include "tools/host/session/session.h"

namespace kova_exporter {

struct Options {
  ListenAddress listen_address;
  unsigned connections_per_address = 0;
  double interval = 5;  // seconds
  kova_host::HostOptions host;
  std::string simulated;  // the simulated machine's name; "" for a real one
  kova_host::RulesFile rules;
  LogLevel log_level = LogLevel::info;
};

// Either options or, for --help and --version, a text to print.
struct ParsedOptions {
  Options options;
  std::optional<std::string> answer;
};

// `arguments` without the program's name. Throws std::invalid_argument, one line for people.
ParsedOptions parse_options(std::vector<std::string> arguments);

}  // namespace kova_exporter
