// What the command line asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host_session.h"

namespace kovactl {

enum class Command { list, capability, get, set, watch, metrics, senml };

struct Request {
  Command command = Command::list;
  HostOptions host;
  std::vector<uint32_t> ids;
  std::string value;      // set: as typed
  std::string family;     // list: "" for all
  std::string output;     // metrics: file to replace; "" for stdout
  std::string base_name;  // senml: "" for the machine's own
  bool json = false;
  bool compact = false;
  bool value_only = false;
  bool openmetrics = false;
  double interval_seconds = 2;
  uint32_t count = 0;  // watch: 0 for no end
};

// Either a request or, for --help and --version, a text to print.
struct ParsedLine {
  Request request;
  std::optional<std::string> answer;
};

// `arguments` without the program's name. Throws CommandError (usage).
ParsedLine parse_command_line(std::vector<std::string> arguments);

// True if the arguments ask for JSON, which holds for errors in the arguments themselves too.
bool asks_for_json(const std::vector<std::string>& arguments);

}  // namespace kovactl
