// JSON text with the shortest digits that give every real again.
#include "json_writer.h"

#include <fmt/format.h>

namespace kovactl {
namespace {

class Writer {
 public:
  explicit Writer(JsonLayout layout) : indented_(layout == JsonLayout::indented) {}

  void write(const json_t* value) {
    if (json_is_object(value)) {
      write_object(value);
    } else if (json_is_array(value)) {
      write_array(value);
    } else if (json_is_real(value)) {
      write_real(json_real_value(value));
    } else {
      write_by_library(value);
    }
  }

  std::string text_;

 private:
  void write_object(const json_t* object) {
    const char* separator = "{";
    const char* key = nullptr;
    json_t* member = nullptr;
    ++depth_;
    json_object_foreach(const_cast<json_t*>(object), key, member) {
      start_entry(separator);
      separator = ",";
      write_by_library(json_text(key).get());
      text_ += indented_ ? ": " : ":";
      write(member);
    }
    end_entries(json_object_size(object) == 0 ? "{}" : "}", json_object_size(object) == 0);
  }

  void write_array(const json_t* array) {
    const char* separator = "[";
    ++depth_;
    for (size_t i = 0; i < json_array_size(array); ++i) {
      start_entry(separator);
      separator = ",";
      write(json_array_get(array, i));
    }
    end_entries(json_array_size(array) == 0 ? "[]" : "]", json_array_size(array) == 0);
  }

  void start_entry(const char* separator) {
    text_ += separator;
    break_line();
  }

  void end_entries(const char* bracket, bool empty) {
    --depth_;
    if (!empty) {
      break_line();
    }
    text_ += bracket;
  }

  void break_line() {
    if (indented_) {
      text_ += '\n';
      text_.append(2 * depth_, ' ');
    }
  }

  void write_real(double real) {
    const std::string digits = fmt::format("{}", real);
    text_ += digits;
    // A reader must see a real in 12.0, as the module publishes it.
    if (digits.find_first_of(".e") == std::string::npos) {
      text_ += ".0";
    }
  }

  // Texts, integers and the constants.
  void write_by_library(const json_t* value) {
    const std::unique_ptr<char, decltype(&std::free)> text(
        json_dumps(value, JSON_ENCODE_ANY | JSON_COMPACT), &std::free);
    if (text == nullptr) {
      throw std::bad_alloc();
    }
    text_ += text.get();
  }

  bool indented_;
  size_t depth_ = 0;
};

}  // namespace

std::string json_document(const json_t* value, JsonLayout layout) {
  Writer writer(layout);
  writer.write(value);
  return writer.text_ + '\n';
}

}  // namespace kovactl
