// Owners of jansson references inside functions, so that no path leaks one. Public signatures keep
// json_t* and json_t**.
#pragma once

#include <jansson.h>

#include <memory>
#include <utility>
#include <vector>

struct JsonRelease {
  void operator()(json_t* value) const { json_decref(value); }
};

/// Owns one reference.
using JsonOwner = std::unique_ptr<json_t, JsonRelease>;

/// Owns one reference of each value in a list, until the list is handed to a package builder.
class JsonList {
 public:
  JsonList() = default;
  explicit JsonList(std::vector<json_t*> values) : values_(std::move(values)) {}
  ~JsonList() {
    for (json_t* value : values_) {
      json_decref(value);
    }
  }
  JsonList(JsonList&& other) noexcept : values_(std::move(other.values_)) { other.release(); }
  JsonList& operator=(JsonList&&) = delete;
  JsonList(const JsonList&) = delete;
  JsonList& operator=(const JsonList&) = delete;

  [[nodiscard]] bool empty() const { return values_.empty(); }
  [[nodiscard]] const std::vector<json_t*>& values() const { return values_; }
  std::vector<json_t*>* get() { return &values_; }

  /// Hands the values and their references to the caller.
  std::vector<json_t*> take() {
    std::vector<json_t*> taken;
    taken.swap(values_);
    return taken;
  }

  /// Forgets the values: their references have been taken over.
  void release() { values_.clear(); }

 private:
  std::vector<json_t*> values_;
};
