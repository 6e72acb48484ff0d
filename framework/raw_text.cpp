// Texts that the device library delivers in words of four characters.
#include "framework/raw_text.h"

namespace raw_text {

void append_characters(unsigned int word, std::string& text) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    text.push_back(static_cast<char>((word >> shift) & 0xFFU));
  }
}

Status append_words(ReadEntry get_func, unsigned int first, unsigned int last, unsigned int word,
                    std::string& text) {
  Status status = IOT_STATUS_SUCCESS;
  for (unsigned int code = first; code <= last; ++code) {
    status = read_word(get_func, code, &word);
    append_characters(word, text);
  }
  return status;
}

}  // namespace raw_text
