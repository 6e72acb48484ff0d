// Reads machine descriptions: the file as a whole, what it builds on, and its checks.
#include "simulator/description.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "simulator/agent_stderr.h"
#include "simulator/item_parser.h"
#include "simulator/json_node.h"
#include "simulator/trace_parser.h"

namespace kova_sim {
namespace {

constexpr int MAX_DEPTH = 8;

using Items = std::map<std::uint32_t, DescribedCode>;

void read_clock(MachineDescription& machine, const Node& node) {
  constexpr std::int64_t ONE_DAY_MS = 86'400'000;
  machine.clock_step_ms.reset();
  if (!node.is_null()) {
    node.members({{"step_ms", [&](const Node& n) {
                     machine.clock_step_ms = static_cast<std::uint32_t>(n.integer(0, ONE_DAY_MS));
                   }}});
    if (!machine.clock_step_ms) {
      node.refuse("\"step_ms\" is missing");
    }
  }
}

void read_bus(Bus& bus, const Node& node) {
  node.members({{"delay_us", [&](const Node& n) { bus.delay_us = read_delay_us(n); }},
                {"fail_read", [&](const Node& n) { bus.fail_read = read_failure(n, true); }},
                {"fail_write", [&](const Node& n) { bus.fail_write = read_failure(n, false); }},
                {"not_described", [&](const Node& n) { bus.not_described = n.status(); }}});
}

void check_size(const Items& items, const Node& node) {
  if (items.size() > MAX_CODES) {
    node.refuse("more than " + std::to_string(MAX_CODES) + " codes are described");
  }
}

// Codes inside a copied run that the copied item refers to move with the run.
DescribedCode moved_item(DescribedCode item, const CodeRun& source, std::uint32_t target) {
  if (item.write) {
    move_codes(*item.write, [&](std::uint32_t& code) {
      if (source.contains(code)) {
        code = target + (code - source.first);
      }
    });
  }
  return item;
}

std::size_t memory_of(const DescribedCode& item) {
  return CODE_MEMORY + (item.write ? item.write->changes.size() * sizeof(std::uint32_t) : 0);
}

// All copies are taken from the machine as it was before the first of them.
void read_copies(Items& items, const Node& copies) {
  std::size_t taken = 0;
  for (const auto& [code, item] : items) {
    taken += memory_of(item);
  }
  copies.charge(taken);
  const Items before = items;
  copies.each_member([&](const std::string& key, const Node& node) {
    const auto target = parse_hex(key);
    const CodeRun source = parse_run(node.text(), node);
    if (!target || *target > UINT32_MAX - (source.last - source.first)) {
      node.refuse("the key is the first code to copy to, such as \"0x00A00201\"");
    }
    const auto end = before.upper_bound(source.last);
    auto at = before.lower_bound(source.first);
    if (at == end) {
      node.refuse("none of these codes is described by the base");
    }
    for (; at != end; ++at) {
      node.charge(memory_of(at->second));
      items[*target + (at->first - source.first)] = moved_item(at->second, source, *target);
    }
    check_size(items, copies);
  });
  copies.budget().give_back(taken);
}

// However many runs there are, and however long, the items are gone through once.
void read_redacted(Items& items, const Node& node) {
  if (!node.is_array()) {
    node.refuse("expected an array of device codes, or runs of them, whose words were blanked");
  }
  std::vector<CodeRun> runs;
  node.each_element([&](const Node& element) {
    const auto run = parse_code_run(element.text());
    if (!run || run->last < run->first) {
      element.refuse("expected a device code or an upward run, \"0xA00011..0xA00015\"");
    }
    runs.push_back(*run);
  });
  std::sort(runs.begin(), runs.end(),
            [](const CodeRun& a, const CodeRun& b) { return a.first < b.first; });
  auto next = runs.begin();
  std::uint64_t end = 0;  // of the runs that have begun
  for (auto& [code, item] : items) {
    for (; next != runs.end() && next->first <= code; ++next) {
      end = std::max(end, std::uint64_t{next->last} + 1);
    }
    item.is_redacted = item.is_redacted || code < end;
  }
}

// The runs that a file describes: however long they are, each takes the same room.
class SeenCodes {
 public:
  // The first code of the run that was in one before.
  std::optional<std::uint32_t> add(const CodeRun& run) {
    const auto after = last_by_first_.upper_bound(run.first);
    if (after != last_by_first_.begin() && std::prev(after)->second >= run.first) {
      return run.first;
    }
    if (after != last_by_first_.end() && after->first <= run.last) {
      return after->first;
    }
    last_by_first_.emplace(run.first, run.last);
    return std::nullopt;
  }

 private:
  std::map<std::uint32_t, std::uint32_t> last_by_first_;
};

void apply(Items& items, std::uint32_t code, const Entry& entry, std::uint32_t index,
           const Node& node) {
  const auto [place, is_new] = items.try_emplace(code);
  node.charge((is_new ? CODE_MEMORY : 0) + entry.memory());
  entry.apply(place->second, index);
}

// A run whose codes have an array element each.
void read_each(Items& items, const CodeRun& run, const Node& node) {
  for (std::uint32_t i = 0; i < run.size(); ++i) {
    const std::uint32_t code = run.first + i;
    const Node element = node.element(i);
    if (element.is_null()) {
      items.erase(code);
    } else {
      apply(items, code, read_entry(element, {code, code}), 0, element);
    }
  }
}

void read_run(Items& items, SeenCodes& seen, const std::string& key, const Node& node) {
  constexpr std::size_t RUN_MEMORY = 48;
  CodeRun run = parse_run(key, node);
  if (node.is_array()) {
    const std::size_t count = node.size();
    if (run.size() == 1 && count > 0 && count <= MAX_RUN && run.first <= UINT32_MAX - (count - 1)) {
      run.last = run.first + static_cast<std::uint32_t>(count - 1);
    }
    if (run.size() != count) {
      node.refuse(std::to_string(run.size()) + " codes, but " + std::to_string(count) + " entries");
    }
  }
  node.charge(RUN_MEMORY);
  if (const auto twice = seen.add(run)) {
    node.refuse(format_hex(*twice) + " is described twice in this file");
  }
  if (node.is_array()) {
    read_each(items, run, node);
  } else if (node.is_null()) {
    items.erase(items.lower_bound(run.first), items.upper_bound(run.last));
  } else {
    const Entry entry = read_entry(node, run);
    for (std::uint32_t i = 0; i < run.size(); ++i) {
      apply(items, run.first + i, entry, i, node);
    }
  }
  check_size(items, node);
}

void read_codes(Items& items, const Node& codes) {
  SeenCodes seen;
  codes.each_member(
      [&](const std::string& key, const Node& node) { read_run(items, seen, key, node); });
}

MachineDescription read_machine(std::string text, const std::string& file, const FileReader& reader,
                                Budget& budget, int depth);

MachineDescription read_base(const Node& node, const std::string& file, const FileReader& reader,
                             int depth) {
  const std::string name = node.text();
  if (name == BUILTIN_NAME) {
    return read_machine(builtin_machine_text(), BUILTIN_NAME, reader, node.budget(), depth + 1);
  }
  if (depth >= MAX_DEPTH) {
    node.refuse("more than " + std::to_string(MAX_DEPTH) + " descriptions build on each other");
  }
  // Relative to the file that names it, so that a folder of descriptions can be moved.
  const std::string path = std::filesystem::path(file).parent_path() / name;
  return read_machine(reader(path), path, reader, node.budget(), depth + 1);
}

// Base, copies, recording, what of it is redacted, codes: each step may change what the ones before
// have described, whatever the order of the keys in the file.
MachineDescription read_machine(std::string text, const std::string& file, const FileReader& reader,
                                Budget& budget, int depth) {
  const JsonSource source(std::move(text), file, budget);
  std::optional<Node> base;
  std::optional<Node> clock;
  std::optional<Node> bus;
  std::optional<Node> copies;
  std::optional<Node> trace;
  std::optional<Node> redacted;
  std::optional<Node> codes;
  const auto keep = [](std::optional<Node>& place) {
    return [&place](const Node& node) { place = node; };
  };
  Node(source).members({{"note", [](const Node& n) { n.text(); }},
                        {"base", keep(base)},
                        {"clock", keep(clock)},
                        {"bus", keep(bus)},
                        {"copy", keep(copies)},
                        {"trace", keep(trace)},
                        {"redacted", keep(redacted)},
                        {"codes", keep(codes)}});
  MachineDescription machine;
  if (base) {
    machine = read_base(*base, file, reader, depth);
  }
  if (clock) {
    read_clock(machine, *clock);
  }
  if (bus) {
    read_bus(machine.bus, *bus);
  }
  if (copies) {
    read_copies(machine.items, *copies);
  }
  if (trace) {
    read_recording(machine, *trace);
    check_size(machine.items, *trace);
  }
  if (redacted) {
    read_redacted(machine.items, *redacted);
  }
  if (codes) {
    read_codes(machine.items, *codes);
  }
  return machine;
}

// A write to nowhere, or a limit that nothing gives, is a slip in the description.
void check_references(const Items& items, const std::string& file) {
  const auto check = [&](std::uint32_t from, std::uint32_t to, const char* key) {
    const auto found = items.find(to);
    if (found == items.end() || !found->second.value) {
      throw DescriptionError(file + ": codes." + format_hex(from) + ".write." + key + ": " +
                             format_hex(to) + " has no value");
    }
  };
  const auto check_limit = [&](std::uint32_t from, const std::optional<Limit>& limit,
                               const char* key) {
    if (limit && std::holds_alternative<CodeReference>(*limit)) {
      check(from, std::get<CodeReference>(*limit).code, key);
    }
  };
  for (const auto& [code, item] : items) {
    if (item.write) {
      for (const std::uint32_t changed : item.write->changes) {
        check(code, changed, "changes");
      }
      check_limit(code, item.write->min, "min");
      check_limit(code, item.write->max, "max");
    }
  }
}

// Parses what `text` gives; an unreadable file is refused like a bad one.
ParseResult parse_checked(const std::function<std::string()>& text, const std::string& file,
                          const FileReader& reader) {
  try {
    Budget budget;
    MachineDescription machine = read_machine(text(), file, reader, budget, 0);
    check_references(machine.items, file);
    return {std::move(machine), {}};
  } catch (const DescriptionError& error) {
    return {std::nullopt, one_line(error.what())};  // keys and file names come from outside
  }
}

}  // namespace

ParseResult parse_description(const std::string& text, const std::string& file,
                              const FileReader& reader) {
  return parse_checked([&] { return text; }, file, reader);
}

ParseResult load_description(const std::string& file) {
  if (file.empty()) {
    return parse_description(builtin_machine_text(), BUILTIN_NAME);
  }
  return parse_checked([&] { return read_file(file); }, file, read_file);
}

}  // namespace kova_sim
