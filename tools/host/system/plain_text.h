// Text that may be shown anywhere, and the columns that it takes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kova_host {

// `text`, of whatever origin, for a terminal or a log: what could steer one or show the text as
// another is told instead. Control characters, those above ASCII too, and bytes that are no UTF-8
// as "\x9b"; marks that turn the direction of writing and separators of lines as "\u202e".
std::string printable(std::string_view text);

// The same for a JSON document, which stays one of equal value: such characters stand in its texts
// only, as "\u009B".
std::string printable_json(std::string_view json);

// The same for a text of the device's, without the blanks that fill its field.
std::string field_text(std::string_view text);

// Columns that `text` takes: code points of UTF-8.
size_t display_width(std::string_view text);

// `text` filled with blanks to `width` columns.
std::string padded(std::string_view text, size_t width);

// `text` if it takes at most `width` columns; otherwise its beginning and "~" for the rest.
std::string shortened(std::string_view text, size_t width);

// The same with the end of `text` kept: for paths, whose last part says the most.
std::string shortened_in_front(std::string_view text, size_t width);

// `text` without the blanks behind it, with which devices fill their texts up.
std::string_view without_trailing_blanks(std::string_view text);

}  // namespace kova_host
