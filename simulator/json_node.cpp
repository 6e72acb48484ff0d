// Typed, range-checked access to the values of a description.
#include "simulator/json_node.h"

#include <algorithm>

#include "simulator/value_source.h"

namespace kova_sim {
namespace {

const std::string TOO_LARGE = "with this the description takes more than " +
                              std::to_string(MAX_MEMORY >> 20U) + " MiB of memory";

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

JsonSource::JsonSource(std::string text, std::string file, Budget& budget)
    : file_(std::move(file)), text_(std::move(text)), budget_(budget) {
  cut_moments();
  parse(0);
  const json_t* trace = cut_.exists() ? json_object_get(json_.get(), "trace") : nullptr;
  moments_ = json_is_array(trace) ? trace : json_object_get(trace, "moments");
}

JsonSource::JsonSource(std::string text, const JsonSource& whole, Origin origin)
    : file_(whole.file_),
      text_(std::move(text)),
      budget_(whole.budget_),
      origin_(std::move(origin)) {
  parse(JSON_DECODE_ANY);
}

// Of the moments only the line breaks stay, so that what follows is found in its line.
void JsonSource::cut_moments() {
  cut_ = find_moments(text_);
  if (!cut_.exists()) {
    return;
  }
  whole_ = std::move(text_);
  text_ = whole_.substr(0, cut_.begin);
  text_.append(static_cast<std::size_t>(
                   std::count(whole_.begin() + static_cast<std::ptrdiff_t>(cut_.begin),
                              whole_.begin() + static_cast<std::ptrdiff_t>(cut_.end), '\n')),
               '\n');
  text_.append(whole_, cut_.end);
}

void JsonSource::parse(std::size_t more_flags) {
  const std::size_t texts = text_.size() + whole_.size();
  const ValueCost cost = cost_of_values(text_, budget_.room() - std::min(texts, budget_.room()));
  if (!budget_.take(texts + cost.bytes)) {
    refuse_size(cost.looked_at);
  }
  taken_ = texts + cost.bytes;
  json_error_t error;
  json_.reset(json_loadb(text_.data(), text_.size(),
                         JSON_REJECT_DUPLICATES | JSON_ALLOW_NUL | more_flags, &error));
  if (!json_) {
    const auto line = static_cast<std::size_t>(error.line);
    throw DescriptionError(
        file_ + ":" + std::to_string(origin_.line + line - 1) + ":" +
        std::to_string(error.column + (line == 1 ? static_cast<int>(origin_.column) : 0)) + ": " +
        error.text);
  }
}

// The line in which the text, or all that was taken before it, is too much.
void JsonSource::refuse_size(std::size_t at) const {
  const auto end = text_.begin() + static_cast<std::ptrdiff_t>(at);
  const auto lines = static_cast<std::size_t>(std::count(text_.begin(), end, '\n'));
  throw DescriptionError(file_ + ":" + std::to_string(origin_.line + lines) + ": " + TOO_LARGE);
}

template <typename Read>
void JsonSource::each_moment(Read read) const {
  const std::string_view text = std::string_view(whole_).substr(0, cut_.end);
  if (text.find_first_not_of(" \t\r\n", cut_.begin) == std::string_view::npos) {
    return;
  }
  Origin origin;
  const auto advance = [&origin](std::string_view passed) {
    const std::size_t last_break = passed.rfind('\n');
    origin.line += static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'));
    origin.column = last_break == std::string_view::npos ? origin.column + passed.size()
                                                         : passed.size() - last_break - 1;
  };
  advance(text.substr(0, cut_.begin));
  const std::string array =
      json_is_object(json_object_get(json_.get(), "trace")) ? "trace.moments[" : "trace[";
  std::size_t begin = cut_.begin;
  for (std::size_t index = 0; begin <= text.size(); ++index) {
    const std::size_t end = end_of_element(text, begin);
    const std::string_view element = text.substr(begin, end - begin);
    origin.path = array + std::to_string(index) + "]";
    const JsonSource source(std::string(element), *this, origin);
    read(Node(source));
    advance(text.substr(begin, end + 1 - begin));
    begin = end + 1;
  }
}

void Node::refuse(const std::string& reason) const {
  ValuePlace place{.path = source_->origin_.path};
  if (container_ != nullptr) {
    find_value(source_->json_.get(), container_, index_, place);
  }
  const std::size_t line = source_->origin_.line + line_of_token(source_->text_, place.tokens) - 1;
  throw DescriptionError(source_->file_ + ":" + std::to_string(line) + ": " +
                         (place.path.empty() ? "" : place.path + ": ") + reason);
}

void Node::charge(std::size_t bytes) const {
  if (!source_->budget_.take(bytes)) {
    refuse(TOO_LARGE);
  }
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

void Node::each_element(const std::function<void(const Node&)>& read) const {
  if (json_ != nullptr && json_ == source_->moments_) {
    source_->each_moment(read);
    return;
  }
  for (std::size_t i = 0; i < size(); ++i) {
    read(element(i));
  }
}

}  // namespace kova_sim
