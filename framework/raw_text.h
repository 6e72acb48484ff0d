// Reads of raw words that become texts: what the decoders of the families with texts share.
#pragma once

#include <string>

#include "framework/device_library.h"
#include "framework/status.h"

namespace raw_text {

/// The device library's own result, or IOT_STATUS_NOT_READY without a read entry. A failed read
/// leaves `*word` as it was unless the library has stored something all the same.
inline Status read_word(ReadEntry get_func, unsigned int code, unsigned int* word) {
  return get_func != nullptr ? get_func(code, word) : IOT_STATUS_NOT_READY;
}

/// Reads one word and assigns the text that `to_text` makes of it; a failed read leaves `out`.
template <typename ToText>
Status read_text(ReadEntry get_func, unsigned int code, std::string& out, const ToText& to_text) {
  unsigned int word = 0;
  const Status status = read_word(get_func, code, &word);
  if (status == IOT_STATUS_SUCCESS) {
    out = to_text(word);
  }
  return status;
}

/// Appends the four characters of a word, the one in the most significant byte first. They are raw
/// bytes: NULs and blanks are kept, and they need not be UTF-8.
void append_characters(unsigned int word, std::string& text);

/// Reads the codes first..last into the one `word` and appends its characters after every read,
/// whatever the read's result: a read that fails without storing repeats the characters of the
/// word before. The status of the last read.
Status append_words(ReadEntry get_func, unsigned int first, unsigned int last, unsigned int word,
                    std::string& text);

}  // namespace raw_text
