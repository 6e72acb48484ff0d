// Traces in a description, and everything that can be wrong with them.
#include "simulator/trace_parser.h"

#include <cmath>
#include <utility>

namespace kova_sim {
namespace {

constexpr std::int64_t LONGEST_MS = 1'000'000'000'000;

// What has been read and written at one code.
struct CodeTraces {
  Trace reads;
  Trace writes;
};

using Traces = std::map<std::uint32_t, CodeTraces>;

// How a trace ends, and where its moments are.
struct Frame {
  std::optional<Node> moments;
  std::optional<bool> wrap;
  std::optional<std::uint64_t> length_ms;
};

Frame read_frame(const Node& node) {
  Frame frame;
  if (node.is_array()) {
    frame.moments = node;
    return frame;
  }
  const auto read_length = [&frame](const Node& n) {
    const double seconds = n.number(0.001, LONGEST_MS / 1e3, "a number of seconds from 0.001 on");
    frame.length_ms = static_cast<std::uint64_t>(std::llround(seconds * 1e3));
  };
  node.members({{"moments", [&](const Node& n) { frame.moments = n; }},
                {"seconds", read_length},
                {"then", [&](const Node& n) {
                   frame.wrap = n.choice({"hold", "wrap"}) == 1;
                 }}});
  if (frame.moments && frame.wrap.value_or(false) && !frame.length_ms) {
    node.refuse("\"seconds\" is missing, after which it begins again");
  }
  return frame;
}

// What one object says: {"read": 3, "word": 7}, {"status": 5, "stores": 0}, {"write": 1}.
struct SpokenAnswer {
  Answer answer;
  std::optional<std::uint32_t> from_call;
  bool is_write = false;
};

SpokenAnswer read_answer(const Node& node, bool may_write) {
  SpokenAnswer spoken;
  if (!node.is_object()) {
    spoken.answer.word = to_word(node.integer(WORD_MIN, WORD_MAX));
    return spoken;
  }
  int words = 0;
  const auto read_word = [&](const Node& n) {
    spoken.answer.word = to_word(n.word());
    ++words;
  };
  std::vector<Node::Member> known = {
      {"read",
       [&](const Node& n) {
         spoken.from_call = static_cast<std::uint32_t>(n.integer(1, UINT32_MAX));
       }},
      {"status", [&](const Node& n) { spoken.answer.status = n.status(); }},
      {"word", read_word},
      {"stores", read_word}};
  if (may_write) {
    known.push_back({"write", [&](const Node& n) {
                       read_word(n);
                       spoken.is_write = true;
                     }});
  }
  node.members(known);
  if (words > 1 || (words == 0 && spoken.answer.status == 0) ||
      (spoken.is_write && spoken.from_call)) {
    node.refuse("an answer has a word, or a status and what it stores");
  }
  return spoken;
}

// Moments of one code, or of those that the moments name.
class MomentReader {
 public:
  explicit MomentReader(std::optional<std::uint32_t> only_code) : only_code_(only_code) {}

  Traces read(const Frame& frame) {
    if (!frame.moments->is_array()) {
      frame.moments->refuse("expected an array of moments");
    }
    frame.moments->each_element([&](const Node& moment) { read_moment(moment, frame); });
    return std::move(traces_);
  }

 private:
  void read_moment(const Node& moment, const Frame& frame) {
    if (moment.size() < 2) {
      moment.refuse("a moment is an array of a time in milliseconds and what was answered");
    }
    const Node time = moment.element(0);
    const auto ms = static_cast<std::uint64_t>(time.integer(0, LONGEST_MS));
    if (ms < last_ms_) {
      time.refuse("time runs backwards: " + std::to_string(ms) + " ms after " +
                  std::to_string(last_ms_) + " ms");
    }
    if (frame.length_ms && ms >= *frame.length_ms) {
      time.refuse("at or after the end, which \"seconds\" gives");
    }
    last_ms_ = ms;
    CodeTraces* traces = only_code_ ? &traces_of(*only_code_, moment) : nullptr;
    for (std::size_t i = 1; i < moment.size(); ++i) {
      const Node part = moment.element(i);
      if (!only_code_ && part.is_string()) {
        traces = &traces_of(part.code(), part);
      } else if (traces == nullptr) {
        part.refuse("expected the device code that answered, such as \"0x690000\"");
      } else {
        add(*traces, ms, part);
      }
    }
  }

  CodeTraces& traces_of(std::uint32_t code, const Node& node) {
    const auto [place, is_new] = traces_.try_emplace(code);
    if (is_new) {
      node.charge(CODE_MEMORY + TRACE_MEMORY);
    }
    return place->second;
  }

  void add(CodeTraces& traces, std::uint64_t ms, const Node& node) const {
    node.charge(ANSWER_MEMORY);
    SpokenAnswer spoken = read_answer(node, !only_code_);
    Trace& trace = spoken.is_write ? traces.writes : traces.reads;
    spoken.answer.from_call = spoken.from_call.value_or(trace.next_call(ms));
    if (!trace.add(ms, spoken.answer)) {
      node.refuse("\"read\" counts upward within a moment");
    }
  }

  std::optional<std::uint32_t> only_code_;
  std::uint64_t last_ms_ = 0;
  Traces traces_;
};

void set_end(Trace& trace, const Frame& frame) {
  trace.repeat_every(frame.wrap.value_or(false) ? *frame.length_ms : 0);
}

SharedTrace finish(Trace trace, const Frame& frame) {
  set_end(trace, frame);
  return std::make_shared<Trace>(std::move(trace));
}

// The traces that a base has may end in another way.
void change_ends(MachineDescription& machine, Frame frame, const Node& node) {
  frame.length_ms = frame.length_ms ? frame.length_ms : machine.recorded_ms;
  if (!frame.wrap) {
    node.refuse("\"moments\" is missing, or \"then\" for those of the base");
  }
  if (*frame.wrap && !frame.length_ms) {
    node.refuse("\"seconds\" is missing, after which it begins again");
  }
  for (auto& [code, item] : machine.items) {
    auto* trace = item.value ? std::get_if<SharedTrace>(&*item.value) : nullptr;
    if (trace != nullptr) {
      set_end(**trace, frame);
    }
    if (item.recorded_writes) {
      set_end(*item.recorded_writes, frame);
    }
  }
}

}  // namespace

SharedTrace read_trace(const Node& node) {
  const Frame frame = read_frame(node);
  if (!frame.moments) {
    node.refuse("\"moments\" is missing");
  }
  Traces traces = MomentReader(0).read(frame);
  if (traces.empty()) {
    node.refuse("a trace has at least one moment");
  }
  return finish(std::move(traces.begin()->second.reads), frame);
}

void read_recording(MachineDescription& machine, const Node& node) {
  const Frame frame = read_frame(node);
  if (!frame.moments) {
    change_ends(machine, frame, node);
    return;
  }
  machine.recorded_ms = frame.length_ms;
  for (auto& [code, traces] : MomentReader(std::nullopt).read(frame)) {
    DescribedCode& item = machine.items[code];
    if (!traces.reads.empty()) {
      item.value = finish(std::move(traces.reads), frame);
      item.is_redacted = false;
    }
    if (!traces.writes.empty()) {
      item.recorded_writes = finish(std::move(traces.writes), frame);
    }
  }
}

}  // namespace kova_sim
