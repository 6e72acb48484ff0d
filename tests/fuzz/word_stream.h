// A device library that answers reads with the input, which is repeated as often as needed. A read
// takes one byte: 'F' fails, 'S' fails and stores a word, 'B' succeeds with a small number (the
// next byte, counted from the blank), any other succeeds with a word. A word is four bytes, most
// significant first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace word_stream {

inline constexpr std::uint32_t kDeviceFailure = 0xE1;

inline const std::uint8_t* data = nullptr;
inline std::size_t size = 0;
inline std::size_t next = 0;

inline void use(const std::uint8_t* input, std::size_t length) {
  data = input;
  size = length;
  next = 0;
}

inline std::uint8_t take_byte() {
  return size == 0 ? 0 : data[next++ % size];
}

inline std::uint32_t read(std::uint32_t /*code*/, std::uint32_t* value) {
  const std::uint8_t kind = take_byte();
  if (kind == 'B') {
    *value = take_byte() - std::uint32_t{' '};
    return 0;
  }
  std::uint32_t word = 0;
  for (int i = 0; i < 4; ++i) {
    word = word << 8 | take_byte();
  }
  if (kind != 'F') {
    *value = word;
  }
  return kind == 'F' || kind == 'S' ? kDeviceFailure : 0;
}

}  // namespace word_stream
