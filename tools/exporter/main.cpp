// kova-exporter: the module's items over HTTP.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/exporter/service.h"
#include "tools/host/session/worker.h"

namespace {

constexpr int kCannotServe = 1;
constexpr int kWrongArguments = 2;

int run(const std::vector<std::string>& arguments) {
  const auto parsed = kova_exporter::parse_options(arguments);
  if (parsed.answer) {
    return std::fputs(parsed.answer->c_str(), stdout) == EOF || std::fflush(stdout) == EOF
               ? kCannotServe
               : EXIT_SUCCESS;
  }
  kova_exporter::set_log_level(parsed.options.log_level);
  return kova_exporter::run_service(parsed.options);
}

}  // namespace

int main(int argc, char** argv) {
  using kova_exporter::LogLevel;
  if (const auto code = kova_host::run_if_worker(argc, argv)) {
    return *code;
  }
  try {
    return run(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const std::invalid_argument& error) {
    kova_exporter::log(LogLevel::error, "{}", error.what());
    return kWrongArguments;
  } catch (const std::exception& error) {
    kova_exporter::log(LogLevel::error, "{}", error.what());
    return kCannotServe;
  }
}
