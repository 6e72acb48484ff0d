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
#include "simulator/json_outline.h"

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

/// What the reading of a description may still take: its texts, their values, the machine that they
/// make. One for all files that build on each other.
class Budget {
 public:
  std::size_t room() const { return room_; }
  bool take(std::size_t bytes) {
    const bool fits = bytes <= room_;
    room_ -= fits ? bytes : 0;
    return fits;
  }
  void give_back(std::size_t bytes) { room_ += bytes; }

 private:
  std::size_t room_ = MAX_MEMORY;
};

/// A parsed file and its text, in which faults are looked up; or an element of its moments, which
/// are parsed one at a time, since a long recording's values would take twenty times its text.
class JsonSource {
 public:
  /// Throws DescriptionError, with line and column, if the text is no JSON, or more of it than
  /// the budget has room for. What it takes is given back in the end.
  JsonSource(std::string text, std::string file, Budget& budget);
  ~JsonSource() { budget_.give_back(taken_); }
  JsonSource(const JsonSource&) = delete;
  JsonSource& operator=(const JsonSource&) = delete;

 private:
  friend class Node;

  // Where a text begins: in its file, and below which keys.
  struct Origin {
    std::string path;
    std::size_t line = 1;
    std::size_t column = 0;
  };

  JsonSource(std::string text, const JsonSource& whole, Origin origin);
  void parse(std::size_t more_flags);
  void cut_moments();
  [[noreturn]] void refuse_size(std::size_t at) const;
  template <typename Read>
  void each_moment(Read read) const;

  std::string file_;
  std::string text_;
  Budget& budget_;
  std::size_t taken_ = 0;
  Origin origin_;
  JsonOwner json_;

  // The text as it came, if it has moments, where they are in it, and the array without them.
  std::string whole_;
  TextRange cut_;
  const json_t* moments_ = nullptr;
};

/// A value of a source, which must outlive it.
class Node {
 public:
  struct Member {
    std::string_view key;
    std::function<void(const Node&)> read;
  };

  explicit Node(const JsonSource& source) : json_(source.json_.get()), source_(&source) {}

  [[noreturn]] void refuse(const std::string& reason) const;

  /// Takes so much of the budget for what the machine keeps of this value, or refuses it.
  void charge(std::size_t bytes) const;
  Budget& budget() const { return source_->budget_; }

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
  /// Hands every element of an array over; none of them outlives its turn.
  void each_element(const std::function<void(const Node&)>& read) const;
  std::size_t size() const { return json_array_size(json_); }
  Node element(std::size_t i) const { return {json_array_get(json_, i), source_, json_, i}; }

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
