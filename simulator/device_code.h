// Device codes and raw words as texts: "0x690000", and runs of codes "0x690000..0x69000A"; and
// what bounds a description. Needs nothing but the standard library: the recording stand-in, which
// writes descriptions, lives in other people's processes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kova_sim {

/// Codes from first to last, both included.
struct CodeRun {
  std::uint32_t first = 0;
  std::uint32_t last = 0;

  std::uint64_t size() const { return std::uint64_t{last} - first + 1; }
  bool contains(std::uint32_t code) const { return first <= code && code <= last; }
};

/// No machine needs more; a slip of the pen must not eat the memory.
inline constexpr std::uint64_t MAX_RUN = 4096;
inline constexpr std::uint64_t MAX_CODES = 65536;
inline constexpr std::size_t MAX_FILE_SIZE = std::size_t{16} << 20;

/// What reading a description may take in all, in bytes: its text and the texts that it builds on,
/// their values, and what the machine keeps, by these counts. The recording stand-in ends a
/// recording that would not fit.
inline constexpr std::size_t MAX_MEMORY = std::size_t{64} << 20;
inline constexpr std::size_t CODE_MEMORY = 384;   // a code, and the calls for it
inline constexpr std::size_t TRACE_MEMORY = 320;  // the traces of a code
inline constexpr std::size_t ANSWER_MEMORY = 40;  // an answer in them, at a moment of its own

/// "0x" and one to eight hexadecimal digits.
std::optional<std::uint32_t> parse_hex(std::string_view text);

/// "0x690000" or "0x690000..0x69000A"; nothing if a bound is no code. The order and the length
/// of the run are for the caller to judge.
std::optional<CodeRun> parse_code_run(std::string_view text);

/// "0x" and eight digits.
std::string format_hex(std::uint32_t word);

}  // namespace kova_sim
