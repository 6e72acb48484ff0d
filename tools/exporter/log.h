// What the exporter tells its administrator: one line each, on stderr.
#pragma once

#include <fmt/format.h>

#include <optional>
#include <string_view>

namespace kova_exporter {

enum class LogLevel { debug, info, warn, error };

// "debug", "info", "warn" or "error".
std::optional<LogLevel> parse_log_level(std::string_view text);

// Messages below it are not written. Set before the first thread starts.
void set_log_level(LogLevel level);

void log_line(LogLevel level, std::string message);

template <typename... Parts>
void log(LogLevel level, fmt::format_string<Parts...> format, Parts&&... parts) {
  log_line(level, fmt::format(format, std::forward<Parts>(parts)...));
}

}  // namespace kova_exporter
