// Texts that many answers share, compressed once and not for each of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kova_exporter {

// A text as deflate blocks (RFC 1951) that end on a byte and are not the last ones, so that others
// may stand around them.
struct DeflatedText {
  std::string blocks;
  uint32_t crc;  // of the text, as gzip counts it
  size_t size;   // of the text, bytes
};

// Throws std::bad_alloc.
DeflatedText deflated(std::string_view text);

// A gzip file (RFC 1952) of one member that holds `head`, the text and `tail`. The two are stored
// as they are: they are short and new in each answer.
std::string gzip_file(std::string_view head, const DeflatedText& text, std::string_view tail);

// A text of which answers are made, compressed when one first wants it so.
class SharedText {
 public:
  SharedText() = default;
  explicit SharedText(std::string text) : plain_(std::move(text)) {}

  const std::string& plain() const { return plain_; }
  const DeflatedText& compressed();

 private:
  std::string plain_;
  std::optional<DeflatedText> compressed_;
};

}  // namespace kova_exporter
