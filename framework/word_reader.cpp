// Texts that the device library delivers in words of four characters.
#include "framework/word_reader.h"

void append_characters(unsigned int word, std::string& text) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    text.push_back(static_cast<char>((word >> shift) & 0xFFU));
  }
}

Status WordReader::append_words(unsigned int first, unsigned int last, unsigned int word,
                                std::string& text) const {
  Status status = IOT_STATUS_SUCCESS;
  for (unsigned int code = first; code <= last; ++code) {
    status = read(code, &word);
    append_characters(word, text);
  }
  return status;
}
