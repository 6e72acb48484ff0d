// Recorded calls as text, as short as people can still read it.
#include "simulator/moment_writer.h"

#include <charconv>
#include <string_view>

namespace kova_sim {
namespace {

void append_number(std::string& text, std::uint64_t number, int base = 10) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number, base);
  text.append(digits, end.ptr);
}

void append_code(std::string& text, std::uint32_t code) {
  text += "\"0x";
  append_number(text, code, 16);
  text += '"';
}

// {"read":3,"status":5,"stores":0}, with the members that there are.
void append_object(std::string& text, const RecordedCall& call) {
  char open = '{';
  const auto member = [&](std::string_view key, std::uint32_t number) {
    text += open;
    text.append("\"").append(key).append("\":");
    append_number(text, number);
    open = ',';
  };
  if (call.is_write) {
    member("write", call.answer.word.value_or(0));
  } else if (call.answer.from_call != 0) {
    member("read", call.answer.from_call);
  }
  if (call.answer.status != 0) {
    member("status", call.answer.status);
  }
  if (call.answer.word && !call.is_write) {
    member(call.answer.status != 0 ? "stores" : "word", *call.answer.word);
  }
  text += '}';
}

void append_answer(std::string& text, const RecordedCall& call) {
  const bool is_plain = !call.is_write && call.answer.status == 0 && call.answer.from_call == 0;
  if (is_plain && call.answer.word) {
    append_number(text, *call.answer.word);
  } else {
    append_object(text, call);
  }
}

}  // namespace

std::string moments_text(const std::vector<RecordedCall>& calls) {
  // A line stays short enough for an editor, also at the moment at which everything is read.
  constexpr int MAX_IN_LINE = 16;
  std::string text;
  const RecordedCall* before = nullptr;
  int in_line = 0;
  for (const RecordedCall& call : calls) {
    const bool new_line = before == nullptr || before->ms != call.ms || in_line == MAX_IN_LINE;
    if (new_line) {
      text += before == nullptr ? "[" : "],\n[";
      append_number(text, call.ms);
      in_line = 0;
    }
    if (new_line || before->code != call.code) {
      text += ',';
      append_code(text, call.code);
    }
    text += ',';
    append_answer(text, call);
    before = &call;
    ++in_line;
  }
  return text.empty() ? text : text + "]";
}

std::string seconds_text(std::uint64_t ms) {
  const std::string fraction = std::to_string(1000 + ms % 1000);
  return std::to_string(ms / 1000) + "." + fraction.substr(1);
}

}  // namespace kova_sim
