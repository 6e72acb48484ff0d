// One value of a description file together with its place in it, so that whatever is wrong with it
// can be said with file, line, key and reason.
#pragma once

#include <jansson.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/device_code.h"

namespace kova_sim {

/// What is wrong with a description, as the one line that the user is shown.
class DescriptionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct JsonRelease {
  void operator()(json_t* json) const { json_decref(json); }
};
using JsonOwner = std::unique_ptr<json_t, JsonRelease>;

/// A parsed file and its text, in which faults are looked up.
struct JsonSource {
  std::string file;
  std::string text;
  JsonOwner json;

  /// Throws DescriptionError, with line and column, if the text is no JSON.
  static JsonSource parse(std::string text, std::string file);
};

/// A value of a source, which must outlive it.
class Node {
 public:
  struct Member {
    std::string_view key;
    std::function<void(const Node&)> read;
  };

  explicit Node(const JsonSource& source) : json_(source.json.get()), source_(&source) {}

  [[noreturn]] void refuse(const std::string& reason) const;

  bool is_null() const { return json_is_null(json_); }
  bool is_true() const { return json_is_true(json_); }
  bool is_object() const { return json_is_object(json_); }
  bool is_array() const { return json_is_array(json_); }
  bool is_string() const { return json_is_string(json_); }
  bool is_word() const { return json_is_integer(json_) || is_string(); }

  /// Each of these refuses a value of another type or outside the range.
  std::int64_t integer(std::int64_t min, std::int64_t max) const;
  double number(double min, double max, const char* expected) const;
  std::string text() const;
  std::size_t choice(const std::vector<std::string_view>& names) const;  // the place in `names`
  std::int64_t word() const;     // -2^31 .. 2^32-1, also as a "0x..." string
  std::uint32_t code() const;    // a device code, always a "0x..." string
  std::uint32_t status() const;  // 1 .. 2^32-1, also as a "0x..." string

  /// Hands each member to its reader, in the file's order; any other key is refused.
  void members(const std::vector<Member>& known) const;
  /// Hands every member over, whatever its key.
  void each_member(const std::function<void(const std::string&, const Node&)>& read) const;
  std::vector<Node> elements() const;

 private:
  Node(json_t* json, const JsonSource* source, const json_t* container, std::size_t index)
      : json_(json), source_(source), container_(container), index_(index) {}

  json_t* json_;
  const JsonSource* source_;
  // The object or array that holds it, and its place there: null, true and false are one and the
  // same value wherever they stand. The whole file has no container.
  const json_t* container_ = nullptr;
  std::size_t index_ = 0;
};

}  // namespace kova_sim
