// What the environment says about a recording.
#include "recorder/settings.h"

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string_view>

namespace kova_recorder {
namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::string host_name() {
  char name[HOST_NAME_MAX + 1] = {};
  static_cast<void>(gethostname(name, sizeof name - 1) == 0);
  std::string host(name);
  for (char& character : host) {
    if (static_cast<unsigned char>(character) <= ' ' || character == '/') {
      character = '_';
    }
  }
  return host;
}

std::string time_text(const std::tm& time, const char* format) {
  char text[32];  // of numbers only, in whatever language
  return {text, std::strftime(text, sizeof text, format, &time)};
}

// What a percent sign and the character behind it stand for in a name.
std::string expanded(char kind, const std::tm& now) {
  switch (kind) {
    case 'd':
      return time_text(now, "%Y-%m-%d");
    case 't':
      return time_text(now, "%H%M%S");
    case 'h':
      return host_name();
    case 'p':
      return std::to_string(getpid());
    case '%':
      return "%";
    default:
      throw RecordingError(
          "KOVA_RECORD_FILE: after a percent sign comes d, the date, t, the time, h, the host, "
          "p, the process ID, or another percent sign");
  }
}

void set_file(Settings& settings, std::string_view pattern) {
  const std::time_t now = std::time(nullptr);
  std::tm time = {};
  gmtime_r(&now, &time);
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '%') {
      settings.file += pattern[i];
      continue;
    }
    const char kind = ++i < pattern.size() ? pattern[i] : '\0';
    settings.file += expanded(kind, time);
    settings.file_is_by_process = settings.file_is_by_process || kind == 'p';
  }
}

std::vector<kova_sim::CodeRun> redacted_codes(std::string_view list) {
  std::vector<kova_sim::CodeRun> runs;
  while (!list.empty()) {
    const std::string_view text = list.substr(0, list.find(','));
    list.remove_prefix(std::min(text.size() + 1, list.size()));
    const auto run = kova_sim::parse_code_run(text);
    if (!run || run->last < run->first) {
      throw RecordingError("KOVA_RECORD_REDACT: '" + std::string(text) +
                           "' is no device code such as 0xB0001C, and no run of them such as "
                           "0xA00011..0xA00015");
    }
    runs.push_back(*run);
  }
  return runs;
}

std::uint32_t step(std::string_view text) {
  constexpr std::uint32_t ONE_DAY_MS = 86'400'000;
  std::uint32_t ms = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, ms);
  if (result.ec != std::errc{} || result.ptr != end || ms == 0 || ms > ONE_DAY_MS) {
    throw RecordingError("KOVA_RECORD_STEP_MS: expected 1 to 86400000 milliseconds");
  }
  return ms;
}

}  // namespace

Settings Settings::from_environment() {
  Settings settings;
  set_file(settings, environment("KOVA_RECORD_FILE"));
  if (!settings.file.empty()) {
    // The agent may go to another folder before the file is finished.
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(settings.file, error);
    settings.file = error ? settings.file : whole.native();
  }
  settings.redacted = redacted_codes(environment("KOVA_RECORD_REDACT"));
  const std::string_view step_text = environment("KOVA_RECORD_STEP_MS");
  if (!step_text.empty()) {
    settings.step_ms = step(step_text);
  }
  return settings;
}

}  // namespace kova_recorder
