// Spans of time as they are typed.
#pragma once

#include <optional>
#include <string_view>

namespace kova_host {

// Seconds: of a number with ms, s, m or h behind it, or with nothing, which means seconds. Nothing
// for any other text.
std::optional<double> parse_time_span(std::string_view text);

}  // namespace kova_host
