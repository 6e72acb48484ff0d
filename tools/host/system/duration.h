// Lengths of time as people type them.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace kova_host {

// "90", "0.5s", "100ms", "10m" or "10min", "1h30m", "2d": numbers with units, the largest first; a
// number alone is seconds. Nothing for anything else, and for what is negative or above a year.
std::optional<std::chrono::milliseconds> parse_duration(std::string_view text);

inline constexpr std::chrono::milliseconds kLongestDuration = std::chrono::hours(365 * 24);

// A time within these bounds; throws HostError (usage), where `text` is no `what` of them.
std::chrono::milliseconds checked_duration(std::string_view text, std::string_view what,
                                           std::chrono::milliseconds shortest,
                                           std::chrono::milliseconds longest = kLongestDuration);

// "45 s", "10 min", "1 h 30 min 5 s"
std::string duration_text(std::chrono::milliseconds duration);

}  // namespace kova_host
