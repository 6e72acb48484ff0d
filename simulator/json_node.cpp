// Typed, range-checked access to the values of a description.
#include "simulator/json_node.h"

#include <algorithm>

#include "simulator/value_source.h"

namespace kova_sim {

namespace {

// The way from the whole file to a value: its keys as the user is shown them, and how many keys
// and values begin before it in the text.
struct ValuePlace {
  std::string path;
  std::size_t tokens = 0;
};

// Looks below `at` for the value at a place of `container`. Only that one's steps stay in `place`.
bool find_value(const json_t* at, const json_t* container, std::size_t index, ValuePlace& place) {
  ++place.tokens;
  const std::size_t length = place.path.size();
  std::size_t i = 0;
  const auto step = [&](json_t* child, const std::string& name) {
    place.path += name;
    if ((at == container && i++ == index) || find_value(child, container, index, place)) {
      return true;
    }
    place.path.resize(length);
    return false;
  };
  if (json_is_array(at)) {
    for (std::size_t element = 0; element < json_array_size(at); ++element) {
      if (step(json_array_get(at, element),
               std::string("[").append(std::to_string(element)).append("]"))) {
        return true;
      }
    }
    return false;
  }
  auto* object = const_cast<json_t*>(at);  // jansson iterates over objects that may change
  for (void* member = json_object_iter(object); member != nullptr;
       member = json_object_iter_next(object, member)) {
    ++place.tokens;
    if (step(json_object_iter_value(member),
             std::string(length == 0 ? "" : ".").append(json_object_iter_key(member)))) {
      return true;
    }
  }
  return false;
}

// Past the key or value that begins at `at`; an object or array is only entered.
std::size_t end_of_token(const std::string& text, std::size_t at) {
  if (text[at] == '{' || text[at] == '[') {
    return at + 1;
  }
  if (text[at] != '"') {
    return std::min(text.find_first_of(" \t\r\n,]}", at), text.size());
  }
  for (++at; at < text.size() && text[at] != '"'; ++at) {
    at += text[at] == '\\' ? 1 : 0;
  }
  return at + 1;
}

// The line in which a key or value of the valid JSON begins, by how many begin before it.
std::size_t line_of_token(const std::string& text, std::size_t tokens_before) {
  std::size_t line = 1;
  for (std::size_t at = 0; at < text.size();) {
    if (std::string_view(" \t\r\n,:]}").find(text[at]) != std::string_view::npos) {
      line += text[at] == '\n' ? 1 : 0;
      ++at;
    } else if (tokens_before-- > 0) {
      at = end_of_token(text, at);
    } else {
      break;
    }
  }
  return line;
}

}  // namespace

JsonSource JsonSource::parse(std::string text, std::string file) {
  json_error_t error;
  JsonOwner json(
      json_loadb(text.data(), text.size(), JSON_REJECT_DUPLICATES | JSON_ALLOW_NUL, &error));
  if (!json) {
    throw DescriptionError(file + ":" + std::to_string(error.line) + ":" +
                           std::to_string(error.column) + ": " + error.text);
  }
  return {std::move(file), std::move(text), std::move(json)};
}

void Node::refuse(const std::string& reason) const {
  ValuePlace place;
  if (container_ != nullptr) {
    find_value(source_->json.get(), container_, index_, place);
  }
  throw DescriptionError(source_->file + ":" +
                         std::to_string(line_of_token(source_->text, place.tokens)) + ": " +
                         (place.path.empty() ? "" : place.path + ": ") + reason);
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
  std::size_t index = 0;
  for (void* at = json_object_iter(json_); at != nullptr; at = json_object_iter_next(json_, at)) {
    read(json_object_iter_key(at), Node(json_object_iter_value(at), source_, json_, index++));
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
    elements.push_back(Node(json_array_get(json_, i), source_, json_, i));
  }
  return elements;
}

}  // namespace kova_sim
