// Reads of raw words that become texts: what the decoders of the families with texts share.
#pragma once

#include <string>

#include "framework/device_library.h"
#include "framework/status.h"

/// The device library as a decoder sees it.
struct WordReader {
  ReadEntry get_func;
  unsigned int offset = 0;  ///< added to every code: the memory module

  /// The device library's own result, or IOT_STATUS_NOT_READY without a read entry. A failed read
  /// leaves `*word` as it was unless the library has stored something all the same.
  Status read(unsigned int code, unsigned int* word) const {
    return get_func != nullptr ? get_func(code + offset, word) : IOT_STATUS_NOT_READY;
  }

  /// Reads the codes first..last into the one `word` and appends its four characters after every
  /// read, whatever the read's result: a read that fails without storing repeats the characters of
  /// the word before. The status of the last read.
  Status append_words(unsigned int first, unsigned int last, unsigned int word,
                      std::string& text) const;
};

/// Appends the four characters of a word, the one in the most significant byte first. They are raw
/// bytes: NULs and blanks are kept, and they need not be UTF-8.
void append_characters(unsigned int word, std::string& text);
