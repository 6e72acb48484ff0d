// `kovactl complete`, for the shell's completion: what may stand where the cursor is. It asks the
// command line itself and the catalogues, never the device.
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "tools/host/export/csv.h"
#include "tools/host/model/item_data.h"
#include "tools/host/session/locations.h"
#include "tools/host/system/typed_number.h"
#include "tools/kovactl/command_line.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

using Words = std::vector<std::string>;

// For the shell: names of files, which it knows better.
constexpr const char* kFiles = "@files";

// Memory modules may be 255; their items are all called the same.
constexpr uint32_t kInstances = 16;

std::vector<Item> all_items() {
  std::vector<Item> items;
  for (const FamilyData& family : item_data()) {
    const std::vector<Item> more = family.items(kInstances);
    items.insert(items.end(), more.begin(), more.end());
  }
  return items;
}

// IDs and paths only where one has been begun: there are hundreds of each.
Words item_words(const std::string& current) {
  const bool wants_id = current.starts_with("0");
  const bool wants_path = current.find('/') != std::string::npos;
  std::set<std::string> words;
  for (const Item& item : all_items()) {
    words.insert(wants_id ? id_text(item.id) : wants_path ? path_of(item) : item.name);
  }
  return {words.begin(), words.end()};
}

Words families() {
  std::set<std::string> names;
  for (const Item& item : all_items()) {
    names.insert(item.family);
  }
  return {names.begin(), names.end()};
}

// What can be written to the item that `text` names by its ID, name or path.
Words labels(const std::string& text) {
  const auto id = parse_item_id(text);
  std::set<std::string> words;
  for (const Item& item : all_items()) {
    if (item.access == "r" ||
        !(same_word(item.name, text) || same_word(path_of(item), text) || id == item.id)) {
      continue;
    }
    for (const Option& option : item.options) {
      words.insert(option.label);
    }
  }
  return {words.begin(), words.end()};
}

Words commands(const CLI::App& app) {
  Words names;
  for (const CLI::App* command : app.get_subcommands({})) {
    if (!command->get_group().empty()) {
      names.push_back(command->get_name());
    }
  }
  return names;
}

const CLI::App* command_called(const CLI::App& app, const std::string& word) {
  const auto all = app.get_subcommands({});
  const auto match = std::find_if(all.begin(), all.end(), [&word](const CLI::App* command) {
    return command->get_name() == word;
  });
  return match == all.end() ? nullptr : *match;
}

void add_options(const CLI::App& app, Words& words) {
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_lnames().empty() && !option->get_group().empty()) {
      words.push_back("--" + option->get_lnames().front());
    }
  }
}

const CLI::Option* option_called(const CLI::App& app, const CLI::App* command,
                                 const std::string& word) {
  const CLI::Option* option = app.get_option_no_throw(word);
  return option == nullptr && command != nullptr ? command->get_option_no_throw(word) : option;
}

bool takes_value(const CLI::Option* option) {
  return option != nullptr && option->get_items_expected_max() > 0;
}

// The words before the cursor, as the command line will take them.
struct Before {
  const CLI::App* command = nullptr;
  const CLI::Option* waiting = nullptr;  // the last word is this option, whose value may follow
  Words positionals;                     // of the command
};

Before understand(const CLI::App& app, const Words& words) {
  Before before;
  for (const std::string& word : words) {
    const bool is_option = word.size() > 1 && word.starts_with("-");
    const CLI::Option* option = is_option ? option_called(app, before.command, word) : nullptr;
    const CLI::App* command = before.command == nullptr ? command_called(app, word) : nullptr;
    if (command != nullptr) {
      before.command = command;
    } else if (before.waiting == nullptr && !is_option) {
      before.positionals.push_back(word);
    }
    before.waiting = takes_value(option) ? option : nullptr;
  }
  return before;
}

// The fields behind what stands in front of the last comma.
Words field_words(const std::string& current, bool may_be_many) {
  const std::string earlier = may_be_many ? current.substr(0, current.rfind(',') + 1) : "";
  Words words = csv_fields();
  for (std::string& word : words) {
    word.insert(0, earlier);
  }
  return words;
}

// What can be in the place of which the help says so: "FILE", or "FILE|now" for that word too.
Words words_of_type(const std::string& type, const std::string& current) {
  Words words;
  for (size_t begin = 0; begin <= type.size();) {
    const size_t end = std::min(type.find('|', begin), type.size());
    const std::string part = type.substr(begin, end - begin);
    if (part == "[MACHINE]") {
      words = shipped_machines();
    }
    if (part == "FILE" || part == "PATH" || part == "RECORDING" || part == "[MACHINE]") {
      words.emplace_back(kFiles);
    } else if (part == "ITEM" || part == "ITEM=RANGE") {
      words = item_words(current);
    } else if (part == "FIELD" || part == "FIELD,...") {
      words = field_words(current, part != "FIELD");
    } else if (!part.empty() && std::islower(static_cast<unsigned char>(part.front())) != 0) {
      words.push_back(part);
    }
    begin = end + 1;
  }
  return words;
}

Words option_values(const CLI::Option& option, const std::string& current) {
  return option.get_lnames().front() == "family" ? families()
                                                 : words_of_type(option.get_type_name(), current);
}

// For "set": items, and what can be written to one that is named.
Words assignments(const Before& before, const std::string& current) {
  const size_t equals = current.find('=');
  if (equals != std::string::npos) {
    const std::string item = current.substr(0, equals);
    Words words = labels(item);
    std::transform(words.begin(), words.end(), words.begin(),
                   [&item](const std::string& label) { return item + '=' + label; });
    return words;
  }
  return before.positionals.size() == 1 ? labels(before.positionals.front()) : item_words(current);
}

Words positional_words(const Before& before, const std::string& current) {
  const auto positionals = before.command->get_options(
      [](const CLI::Option* option) { return option->get_positional(); });
  const size_t place = before.positionals.size();
  if (positionals.empty() ||
      (place >= positionals.size() && positionals.back()->get_items_expected_max() == 1)) {
    return {};
  }
  const CLI::Option& option = *positionals[std::min(place, positionals.size() - 1)];
  // One without a type of its own is called by it.
  const std::string type =
      option.get_type_name() == "TEXT" ? option.get_name(true) : option.get_type_name();
  return type == "ITEM=VALUE" ? assignments(before, current) : words_of_type(type, current);
}

// For "--option=VALUE", which is one word.
Words joined_values(const CLI::App& app, const Before& before, const std::string& current) {
  const size_t equals = current.find('=');
  const std::string name = current.substr(0, equals);
  const CLI::Option* option = option_called(app, before.command, name);
  Words words = takes_value(option) ? option_values(*option, current.substr(equals + 1)) : Words();
  for (std::string& word : words) {
    if (word != kFiles) {
      word.insert(0, name + '=');
    }
  }
  return words;
}

Words candidates(const CLI::App& app, const Words& words, const std::string& current) {
  const Before before = understand(app, words);
  Words result;
  if (before.waiting != nullptr) {
    result = option_values(*before.waiting, current);
    if (before.waiting->get_lnames().front() != "simulate") {
      return result;
    }
  }
  if (current.starts_with("--") && current.find('=') != std::string::npos) {
    return joined_values(app, before, current);
  }
  if (current.starts_with("-")) {
    add_options(app, result);
    if (before.command != nullptr) {
      add_options(*before.command, result);
    }
    return result;
  }
  for (const std::string& word :
       before.command == nullptr ? commands(app) : positional_words(before, current)) {
    // Files are one word, whatever asks for them.
    if (std::find(result.begin(), result.end(), word) == result.end()) {
      result.push_back(word);
    }
  }
  return result;
}

bool begins_with(const std::string& word, const std::string& start) {
  return word.size() >= start.size() && same_word(word.substr(0, start.size()), start);
}

// The first of `words` is the one at the cursor, behind a "=", so that it is never empty.
ExitCode run_complete(const CLI::App& app, const Words& words) {
  const std::string current = words.front().substr(1);
  for (const std::string& word : candidates(app, {words.begin() + 1, words.end()}, current)) {
    if (word == kFiles || begins_with(word, current)) {
      print(word + '\n');
    }
  }
  return ExitCode::success;
}

}  // namespace

void add_complete(CommandLine& line) {
  auto words = std::make_shared<Words>();
  CLI::App& command =
      line.add({"complete", "Words for the shell's completion", "kovactl complete -- =li"},
               [words, &line](const GlobalOptions&) { return run_complete(line.app(), *words); });
  command.add_option("WORD", *words, "The word at the cursor after a '=', then those before it")
      ->required();
  command.group("");  // not among the commands in the help
}

}  // namespace kovactl
