// Entries of a description: values, failures, writes.
#include "simulator/item_parser.h"

#include <cmath>

#include "simulator/kova_device_sim.h"
#include "simulator/trace_parser.h"

namespace kova_sim {
namespace {

constexpr double LONGEST_SECONDS = 1e9;

double read_number(const Node& node) {
  return node.number(static_cast<double>(WORD_MIN), static_cast<double>(WORD_MAX),
                     "a number that fits a 32-bit word");
}

double read_positive(const Node& node) {
  return node.number(1e-6, LONGEST_SECONDS, "a number from 0.000001 to 1000000000");
}

template <typename T>
T required(const std::optional<T>& value, const char* key, const Node& node) {
  if (!value) {
    node.refuse(std::string("\"") + key + "\" is missing");
  }
  return *value;
}

Ramp read_ramp(const Node& node) {
  std::optional<std::int64_t> from;
  std::optional<std::int64_t> to;
  std::optional<double> seconds;
  std::optional<double> per_second;
  bool wrap = false;
  node.members({{"from", [&](const Node& n) { from = n.word(); }},
                {"to", [&](const Node& n) { to = n.word(); }},
                {"seconds", [&](const Node& n) { seconds = read_positive(n); }},
                {"per_second", [&](const Node& n) { per_second = read_positive(n); }},
                {"then", [&](const Node& n) {
                   wrap = n.choice({"hold", "wrap"}) == 1;
                 }}});
  Ramp ramp{.from = required(from, "from", node), .to = required(to, "to", node), .wrap = wrap};
  if (seconds.has_value() == per_second.has_value()) {
    node.refuse("give either \"seconds\" or \"per_second\"");
  }
  if (ramp.from == ramp.to) {
    node.refuse("\"from\" and \"to\" are the same");
  }
  ramp.seconds =
      seconds ? *seconds : std::abs(static_cast<double>(ramp.to - ramp.from)) / *per_second;
  return ramp;
}

// Sine and noise share their range and its check; the last key is their own.
struct Swing {
  double mean = 0;
  double amplitude = 0;
};

Swing read_swing(const Node& node, const Node::Member& own) {
  std::optional<double> mean;
  std::optional<double> amplitude;
  node.members({{"mean", [&](const Node& n) { mean = read_number(n); }},
                {"amplitude", [&](const Node& n) { amplitude = read_number(n); }},
                own});
  const Swing swing{required(mean, "mean", node), required(amplitude, "amplitude", node)};
  if (swing.amplitude < 0 || swing.mean - swing.amplitude < static_cast<double>(WORD_MIN) ||
      swing.mean + swing.amplitude > static_cast<double>(WORD_MAX)) {
    node.refuse("the signal leaves the range of a 32-bit word");
  }
  return swing;
}

Sine read_sine(const Node& node) {
  std::optional<double> period;
  const Swing swing =
      read_swing(node, {"period_seconds", [&](const Node& n) { period = read_positive(n); }});
  return {swing.mean, swing.amplitude, required(period, "period_seconds", node)};
}

Noise read_noise(const Node& node) {
  std::uint64_t seed = 0;
  const Swing swing = read_swing(node, {"seed", [&](const Node& n) {
                                          seed = static_cast<std::uint64_t>(n.integer(0, WORD_MAX));
                                        }});
  return {swing.mean, swing.amplitude, seed};
}

// The four characters that stand at one place of a text, the first in the top byte.
Stored text_word(const Entry::Text& text, std::uint32_t index) {
  Stored stored;
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t at = std::size_t{index} * 4 + i;
    const char character = at < text.text.size() ? text.text[at] : text.pad;
    stored.word = stored.word << 8 | static_cast<unsigned char>(character);
  }
  return stored;
}

std::string read_text(const Node& node, const CodeRun& run) {
  std::string text = node.text();
  if (text.size() > run.size() * 4) {
    node.refuse(std::to_string(text.size()) + " bytes do not fit " + std::to_string(run.size()) +
                " codes of four");
  }
  return text;
}

// A code that an entry names for the first place of its run; it moves on with the place.
std::uint32_t first_code(const Node& node, const CodeRun& run) {
  const std::uint32_t code = node.code();
  if (code > UINT32_MAX - (run.size() - 1)) {
    node.refuse("the run leaves the range of device codes");
  }
  return code;
}

std::vector<std::uint32_t> read_changes(const Node& node, const CodeRun& run) {
  if (!node.is_array()) {
    return {first_code(node, run)};
  }
  constexpr std::size_t MAX_CHANGES = 64;
  std::vector<std::uint32_t> codes;
  if (node.size() > MAX_CHANGES) {
    node.refuse("a write changes at most " + std::to_string(MAX_CHANGES) + " codes");
  }
  node.each_element([&](const Node& element) { codes.push_back(first_code(element, run)); });
  return codes;
}

Limit read_limit(const Node& node, const CodeRun& run) {
  if (!node.is_object()) {
    return node.word();
  }
  std::optional<std::uint32_t> code;
  node.members({{"code", [&](const Node& n) { code = first_code(n, run); }}});
  return CodeReference{required(code, "code", node)};
}

std::optional<WriteRule> read_write(const Node& node, const CodeRun& run) {
  if (node.is_null()) {
    return std::nullopt;
  }
  WriteRule rule{.changes = {run.first},
                 .min = std::nullopt,
                 .max = std::nullopt,
                 .refused = SIM_STATUS_OUT_OF_LIMITS};
  if (node.is_true()) {
    return rule;
  }
  if (!node.is_object()) {
    node.refuse("expected true, an object or null");
  }
  node.members({{"changes", [&](const Node& n) { rule.changes = read_changes(n, run); }},
                {"min", [&](const Node& n) { rule.min = read_limit(n, run); }},
                {"max", [&](const Node& n) { rule.max = read_limit(n, run); }},
                {"refused", [&](const Node& n) { rule.refused = n.status(); }}});
  const auto* min = rule.min ? std::get_if<std::int64_t>(&*rule.min) : nullptr;
  const auto* max = rule.max ? std::get_if<std::int64_t>(&*rule.max) : nullptr;
  if (min != nullptr && max != nullptr && *min > *max) {
    node.refuse("\"min\" is above \"max\"");
  }
  return rule;
}

Entry read_object(const Node& node, const CodeRun& run) {
  Entry entry;
  std::vector<ValueSource> sources;
  std::optional<Node> text;
  std::optional<Node> pad;
  node.members({{"note", [](const Node& n) { n.text(); }},
                {"value", [&](const Node& n) { sources.emplace_back(Stored{to_word(n.word())}); }},
                {"text", [&](const Node& n) { text = n; }},
                {"pad", [&](const Node& n) { pad = n; }},
                {"ramp", [&](const Node& n) { sources.emplace_back(read_ramp(n)); }},
                {"sine", [&](const Node& n) { sources.emplace_back(read_sine(n)); }},
                {"noise", [&](const Node& n) { sources.emplace_back(read_noise(n)); }},
                {"trace", [&](const Node& n) { sources.emplace_back(read_trace(n)); }},
                {"write", [&](const Node& n) { entry.write = read_write(n, run); }},
                {"fail_read", [&](const Node& n) { entry.fail_read = read_failure(n, true); }},
                {"fail_write", [&](const Node& n) { entry.fail_write = read_failure(n, false); }},
                {"delay_us", [&](const Node& n) { entry.delay_us = read_delay_us(n); }}});
  if (pad && !text) {
    pad->refuse("there is no \"text\" to pad");
  }
  if (text) {
    const bool nul = pad && pad->choice({"space", "nul"}) == 1;
    entry.text = Entry::Text{.text = read_text(*text, run), .pad = nul ? '\0' : ' '};
  }
  if (sources.size() + (text ? 1 : 0) > 1) {
    node.refuse("more than one of value, text, ramp, sine, noise and trace");
  }
  if (!sources.empty()) {
    entry.value = sources.front();
  }
  return entry;
}

}  // namespace

CodeRun parse_run(const std::string& text, const Node& node) {
  const auto run = parse_code_run(text);
  if (!run) {
    node.refuse("a device code is \"0x690000\", a run of them \"0x690000..0x69000A\"");
  }
  if (run->last < run->first || run->size() > MAX_RUN) {
    node.refuse("a run goes upward over at most " + std::to_string(MAX_RUN) + " codes");
  }
  return *run;
}

Entry read_entry(const Node& node, const CodeRun& run) {
  if (node.is_object()) {
    return read_object(node, run);
  }
  if (!node.is_word()) {
    node.refuse("expected a number, a \"0x...\" string, an object, null, or one array for a run");
  }
  Entry entry;
  entry.value = Stored{to_word(node.word())};
  return entry;
}

void Entry::apply(DescribedCode& item, std::uint32_t index) const {
  if (text) {
    item.value = text_word(*text, index);
  } else if (value) {
    item.value = value;
  }
  item.is_redacted = item.is_redacted && !text && !value;
  if (write) {
    item.write = *write;
    if (item.write) {
      move_codes(*item.write, [index](std::uint32_t& code) { code += index; });
    }
  }
  item.fail_read = fail_read.value_or(item.fail_read);
  item.fail_write = fail_write.value_or(item.fail_write);
  item.delay_us = delay_us.value_or(item.delay_us);
}

std::size_t Entry::memory() const {
  return write && *write ? (*write)->changes.size() * sizeof(std::uint32_t) : 0;
}

std::optional<Failure> read_failure(const Node& node, bool may_store) {
  if (node.is_null()) {
    return std::nullopt;
  }
  Failure failure;
  if (!node.is_object()) {
    failure.status = node.status();
    return failure;
  }
  std::vector<Node::Member> known = {
      {"status", [&](const Node& n) { failure.status = n.status(); }},
      {"every",
       [&](const Node& n) { failure.every = static_cast<std::uint32_t>(n.integer(1, WORD_MAX)); }}};
  if (may_store) {
    known.push_back({"stores", [&](const Node& n) { failure.stores = to_word(n.word()); }});
  }
  node.members(known);
  if (failure.status == 0) {
    node.refuse("\"status\" is missing");
  }
  return failure;
}

std::uint32_t read_delay_us(const Node& node) {
  constexpr std::int64_t TEN_SECONDS = 10'000'000;
  return static_cast<std::uint32_t>(node.integer(0, TEN_SECONDS));
}

}  // namespace kova_sim
