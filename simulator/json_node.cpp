// Typed, range-checked access to the values of a description.
#include "simulator/json_node.h"

#include <charconv>

#include "simulator/value_source.h"

namespace kova_sim {

void Node::refuse(const std::string& reason) const {
  throw DescriptionError(file_ + ": " + (path_.empty() ? "" : path_ + ": ") + reason);
}

std::int64_t Node::integer(std::int64_t min, std::int64_t max) const {
  const json_int_t value = json_integer_value(json_);
  if (!json_is_integer(json_) || value < min || value > max) {
    refuse("expected a whole number from " + std::to_string(min) + " to " + std::to_string(max));
  }
  return value;
}

double Node::number(double min, double max, const char* expected) const {
  const double value = json_number_value(json_);
  if (!json_is_number(json_) || value < min || value > max) {
    refuse(std::string("expected ") + expected);
  }
  return value;
}

std::string Node::text() const {
  if (!json_is_string(json_)) {
    refuse("expected a text");
  }
  return {json_string_value(json_), json_string_length(json_)};
}

std::size_t Node::choice(const std::vector<std::string_view>& names) const {
  const std::string name = text();
  std::string expected;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i] == name) {
      return i;
    }
    expected.append(i == 0 ? "\"" : ", \"").append(names[i]).append("\"");
  }
  refuse("expected one of " + expected);
}

std::int64_t Node::word() const {
  if (!json_is_string(json_)) {
    return integer(WORD_MIN, WORD_MAX);
  }
  const auto word = parse_hex(text());
  if (!word) {
    refuse("expected a number, or \"0x\" and one to eight hexadecimal digits");
  }
  return *word;
}

std::uint32_t Node::code() const {
  if (!json_is_string(json_)) {
    refuse("expected a device code such as \"0x690000\"");
  }
  return static_cast<std::uint32_t>(word());
}

std::uint32_t Node::status() const {
  const std::int64_t value = word();
  if (value <= 0) {
    refuse("expected the status of a failure, 1 to 4294967295");
  }
  return static_cast<std::uint32_t>(value);
}

void Node::each_member(const std::function<void(const std::string&, const Node&)>& read) const {
  if (!is_object()) {
    refuse("expected an object");
  }
  for (void* at = json_object_iter(json_); at != nullptr; at = json_object_iter_next(json_, at)) {
    const std::string key = json_object_iter_key(at);
    read(key, Node(json_object_iter_value(at), file_, path_.empty() ? key : path_ + "." + key));
  }
}

void Node::members(const std::vector<Member>& known) const {
  each_member([&known](const std::string& key, const Node& value) {
    std::string names;
    for (const Member& member : known) {
      if (member.key == key) {
        member.read(value);
        return;
      }
      names.append(names.empty() ? "" : ", ").append(member.key);
    }
    value.refuse("unknown key; known here: " + names);
  });
}

std::vector<Node> Node::elements() const {
  std::vector<Node> elements;
  for (std::size_t i = 0; i < json_array_size(json_); ++i) {
    elements.emplace_back(json_array_get(json_, i), file_, path_ + "[" + std::to_string(i) + "]");
  }
  return elements;
}

std::optional<std::uint32_t> parse_hex(std::string_view text) {
  if (text.size() < 3 || text.size() > 10 || text.substr(0, 2) != "0x") {
    return std::nullopt;
  }
  std::uint32_t word = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + 2, end, word, 16);
  if (result.ec != std::errc{} || result.ptr != end) {
    return std::nullopt;
  }
  return word;
}

std::string format_hex(std::uint32_t word) {
  constexpr std::string_view DIGITS = "0123456789ABCDEF";
  std::string text;
  for (int shift = 28; shift >= 0; shift -= 4) {
    text += DIGITS[(word >> shift) & 0xF];
  }
  return "0x" + text;
}

}  // namespace kova_sim
