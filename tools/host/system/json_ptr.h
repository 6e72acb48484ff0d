// Owner of one reference to a jansson value, and the few JSON steps that all commands share.
#pragma once

#include <jansson.h>

#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

namespace kova_host {

struct JsonRelease {
  void operator()(json_t* value) const { json_decref(value); }
};
using JsonPtr = std::unique_ptr<json_t, JsonRelease>;

// Takes over a new reference; jansson makes null of a value only when memory runs out or a text
// is not UTF-8, and this program hands it checked texts.
inline JsonPtr own(json_t* value) {
  if (value == nullptr) {
    throw std::bad_alloc();
  }
  return JsonPtr(value);
}

inline JsonPtr json_text(std::string_view text) {
  return own(json_stringn(text.data(), text.size()));
}

// The member of that name, whatever stands there: "" for what is no text, nothing for what is no
// number. `object` may be null.
inline std::string text_at(const json_t* object, const char* key) {
  const json_t* value = json_object_get(object, key);
  return json_is_string(value) ? std::string(json_string_value(value), json_string_length(value))
                               : std::string();
}

inline std::optional<double> number_at(const json_t* object, const char* key) {
  const json_t* value = json_object_get(object, key);
  return json_is_number(value) ? std::optional(json_number_value(value)) : std::nullopt;
}

inline void put(const JsonPtr& object, const char* key, JsonPtr value) {
  if (json_object_set_new(object.get(), key, value.release()) != 0) {
    throw std::bad_alloc();
  }
}

inline void append(const JsonPtr& array, JsonPtr value) {
  if (json_array_append_new(array.get(), value.release()) != 0) {
    throw std::bad_alloc();
  }
}

}  // namespace kova_host
