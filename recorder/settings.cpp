// What the environment says about a recording.
#include "recorder/settings.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace kova_recorder {
namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

void set_file(Settings& settings, std::string_view pattern) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '%') {
      settings.file += pattern[i];
      continue;
    }
    const char kind = ++i < pattern.size() ? pattern[i] : '\0';
    if (kind == 'p') {
      settings.file += std::to_string(getpid());
      settings.file_is_by_process = true;
    } else if (kind == '%') {
      settings.file += '%';
    } else {
      throw RecordingError(
          "KOVA_RECORD_FILE: after a percent sign comes p, the process ID, or "
          "another percent sign");
    }
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
