// Device codes and raw words as texts.
#include "simulator/device_code.h"

#include <charconv>

namespace kova_sim {

std::optional<std::uint32_t> parse_hex(std::string_view text) {
  if (text.size() < 3 || text.size() > 10 || text.substr(0, 2) != "0x") {
    return std::nullopt;
  }
  std::uint32_t word = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + 2, end, word, 16);
  if (result.ec != std::errc{} || result.ptr != end) {
    return std::nullopt;
  }
  return word;
}

std::optional<CodeRun> parse_code_run(std::string_view text) {
  constexpr std::string_view DOTS = "..";
  const std::size_t dots = text.find(DOTS);
  const auto first = parse_hex(text.substr(0, dots));
  const auto last =
      dots == std::string_view::npos ? first : parse_hex(text.substr(dots + DOTS.size()));
  if (!first || !last) {
    return std::nullopt;
  }
  return CodeRun{*first, *last};
}

std::string format_hex(std::uint32_t word) {
  constexpr std::string_view DIGITS = "0123456789ABCDEF";
  std::string text;
  for (int shift = 28; shift >= 0; shift -= 4) {
    text += DIGITS[(word >> shift) & 0xF];
  }
  return "0x" + text;
}

}  // namespace kova_sim
