// Text that may be shown anywhere, and the columns that it takes.
#include "tools/host/system/plain_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <utility>

namespace kova_host {

namespace {

// What a text begins with: a character of UTF-8, or a byte that begins none.
struct Beginning {
  uint32_t code = 0;
  size_t size = 1;
  bool is_character = false;
};

bool is_continuation_byte(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

Beginning beginning_of(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) {
    return {.code = lead, .size = 1, .is_character = true};
  }
  // By the count of leading ones; the least code that needs so many bytes.
  constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto size = static_cast<size_t>(std::countl_one(lead));
  if (size < 2 || size >= std::size(kLeast) || text.size() < size ||
      !std::all_of(text.begin() + 1, text.begin() + static_cast<ptrdiff_t>(size),
                   &is_continuation_byte)) {
    return {.code = lead};
  }
  uint32_t code = lead & (0x7FU >> size);
  for (const char c : text.substr(1, size - 1)) {
    code = code << 6U | (static_cast<unsigned char>(c) & 0x3FU);
  }
  return code < kLeast[size] ? Beginning{.code = lead} : Beginning{code, size, true};
}

// Control characters, C1 too, by which a terminal is steered, and the marks and separators by which
// a text shows in another order, or on more lines, than it has.
bool misleads(uint32_t code) {
  constexpr std::pair<uint32_t, uint32_t> kRanges[] = {{0x00, 0x1F},     {0x7F, 0x9F},
                                                       {0x061C, 0x061C}, {0x200E, 0x200F},
                                                       {0x2028, 0x202E}, {0x2066, 0x2069}};
  return std::any_of(std::begin(kRanges), std::end(kRanges), [code](const auto& range) {
    return code >= range.first && code <= range.second;
  });
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const Beginning next = beginning_of(text);
    if (next.is_character && !misleads(next.code)) {
      result += text.substr(0, next.size);
    } else if (next.code <= 0xFF) {
      fmt::format_to(std::back_inserter(result), "\\x{:02x}", next.code);
    } else {
      fmt::format_to(std::back_inserter(result), "\\u{:04x}", next.code);
    }
    text.remove_prefix(next.size);
  }
  return result;
}

std::string printable_json(std::string_view json) {
  std::string result;
  const auto is_ascii = [](char c) { return static_cast<unsigned char>(c) < 0x7F; };
  while (!json.empty()) {
    const auto plain =
        static_cast<size_t>(std::find_if_not(json.begin(), json.end(), is_ascii) - json.begin());
    result += json.substr(0, plain);
    json.remove_prefix(plain);
    if (json.empty()) {
      break;
    }
    const Beginning next = beginning_of(json);
    if (misleads(next.code)) {
      fmt::format_to(std::back_inserter(result), "\\u{:04X}", next.code);
    } else {
      result += json.substr(0, next.size);
    }
    json.remove_prefix(next.size);
  }
  return result;
}

std::string field_text(std::string_view text) {
  return printable(without_trailing_blanks(text));
}

size_t display_width(std::string_view text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return !is_continuation_byte(c); }));
}

std::string padded(std::string_view text, size_t width) {
  std::string result(text);
  const size_t used = display_width(text);
  result.append(width > used ? width - used : 0, ' ');
  return result;
}

std::string shortened(std::string_view text, size_t width) {
  if (display_width(text) <= width) {
    return std::string(text);
  }
  std::string result;
  size_t columns = 0;
  for (const char c : text) {
    columns += display_width(std::string_view(&c, 1));
    if (columns >= width) {
      break;
    }
    result += c;
  }
  return width == 0 ? result : result + '~';
}

std::string shortened_in_front(std::string_view text, size_t width) {
  const size_t columns = display_width(text);
  if (columns <= width) {
    return std::string(text);
  }
  // Beginnings of characters that go, and all that is left of the last of them.
  size_t too_many = columns + 1 - width;
  while (!text.empty() && (too_many > 0 || display_width(text.substr(0, 1)) == 0)) {
    too_many -= too_many > 0 ? display_width(text.substr(0, 1)) : 0;
    text.remove_prefix(1);
  }
  return width == 0 ? std::string() : '~' + std::string(text);
}

std::string_view without_trailing_blanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace kova_host
