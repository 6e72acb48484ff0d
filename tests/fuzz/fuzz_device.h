// A device library whose answers a fuzz input describes, and what must hold of any answer.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// Ends the run with a report of the input when a promise is broken.
#define FUZZ_EXPECT(condition)                                             \
  do {                                                                     \
    if (!(condition)) {                                                    \
      std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                        \
    }                                                                      \
  } while (false)

namespace fuzz_device {

/// Forgets all codes and statuses: every read and write fails with 1.
void reset();

/// Takes "CODE WORD [STATUS]", hexadecimal: what a code holds, and the result of reading and
/// writing it. A failing read stores the word all the same. False for any other line.
bool describe(std::string_view line);

/// Lowers the word that a code holds.
void limit(std::uint32_t code, std::uint32_t max);

/// True for a status that the device itself has returned since the reset.
bool has_returned(std::uint32_t status);

/// The first word of `line`, which keeps the rest.
std::string_view take_word(std::string_view* line);

/// The next line of the input, without its end.
std::string_view take_line(std::string_view* text);

}  // namespace fuzz_device
