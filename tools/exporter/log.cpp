// What the exporter tells its administrator.
#include "tools/exporter/log.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "tools/host/system/plain_text.h"

namespace kova_exporter {
namespace {

struct Level {
  std::string_view name;
  std::string_view journal;  // priority in front of a line, as sd-daemon(3) has it
};

constexpr std::array<Level, 4> kLevels = {
    {{"debug", "<7>"}, {"info", "<6>"}, {"warn", "<4>"}, {"error", "<3>"}}};

LogLevel lowest = LogLevel::info;

}  // namespace

std::optional<LogLevel> parse_log_level(std::string_view text) {
  const auto* level = std::find_if(kLevels.begin(), kLevels.end(),
                                   [text](const Level& l) { return l.name == text; });
  return level == kLevels.end() ? std::nullopt
                                : std::optional(static_cast<LogLevel>(level - kLevels.begin()));
}

void set_log_level(LogLevel level) {
  lowest = level;
}

void log_line(LogLevel level, std::string message) {
  if (level < lowest) {
    return;
  }
  // Texts of clients and devices cannot fake a second line or drive a terminal.
  message = kova_host::printable(message);
  const Level& row = kLevels[static_cast<size_t>(level)];
  const bool to_journal = std::getenv("JOURNAL_STREAM") != nullptr;
  const std::string line = to_journal ? fmt::format("{}{}\n", row.journal, message)
                                      : fmt::format("kova-exporter: {}: {}\n", row.name, message);
  // One write a line: lines of two threads do not mix. There is nobody to tell of a failure.
  (void)!write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace kova_exporter
