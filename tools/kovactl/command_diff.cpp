// `kovactl diff`: what has changed between two recordings or listings, or since one of them.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <map>
#include <set>

#include "tools/host/export/json_report.h"
#include "tools/host/record/comparison.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/system/regular_file.h"
#include "tools/host/values/shown_value.h"
#include "tools/kovactl/child_process.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

namespace fs = std::filesystem;

constexpr const char* kNow = "now";

struct DiffOptions {
  std::string before;
  std::string after;
  bool json = false;
  bool all = false;
};

// What this program prints for such arguments.
std::string output_of(const std::vector<std::string>& arguments) {
  constexpr double kForever = std::numeric_limits<double>::infinity();
  ChildProcess child(arguments);
  std::string text;
  while (const auto line = child.next_line(kForever, [] { return true; })) {
    text += *line + '\n';
  }
  return text;
}

// A child plays the recording: a process has one device library for all its life.
Listing play(const GlobalOptions& globals, const std::string& file) {
  std::vector<std::string> arguments = {"--simulate", fs::absolute(file)};
  if (!globals.host.module.empty()) {
    arguments.insert(arguments.end(), {"--module", globals.host.module});
  }
  arguments.insert(arguments.end(), {"list", "--json"});
  const std::string json = output_of(arguments);
  const JsonPtr document(json_loadb(json.data(), json.size(), 0, nullptr));
  const char* message =
      json_string_value(json_object_get(json_object_get(document.get(), "error"), "message"));
  if (message != nullptr) {
    // The simulator's messages begin with the file's name.
    const std::string text = message;
    throw HostError(Fault::usage, text.find(file) == std::string::npos ? file + ": " + text : text);
  }
  return listing_from(parse_list_document(json, file));
}

std::string read_whole(const std::string& file) {
  try {
    return read_regular_file(file);
  } catch (const HostError& error) {
    throw HostError(error.fault(), fmt::format("{}; give a recording, a file that list --json has "
                                               "written, or 'now'",
                                               error.what()));
  }
}

Listing listing_of(const GlobalOptions& globals, const std::string& name) {
  if (name == kNow) {
    return list_machine(*open_session(globals));
  }
  const std::string text = read_whole(name);
  return is_list_document(text) ? listing_from(parse_list_document(text, "'" + name + "'"))
                                : play(globals, name);
}

// Memory modules pad their texts with blanks.
std::string shown(const Change& change, const ListedItem& listed) {
  std::string text =
      printable(change.kind == ChangeKind::range ? range_text(listed.item)
                                                 : value_with_unit(listed.item, listed.reading));
  text.erase(text.find_last_not_of(' ') + 1);
  return text.empty() ? "-" : text;
}

std::string values_text(const Change& change) {
  if (!change.before) {
    return shown(change, *change.after);
  }
  if (!change.after) {
    return "was " + shown(change, *change.before);
  }
  return shown(change, *change.before) + " -> " + shown(change, *change.after);
}

// A line of output: what has happened, where, and the values.
struct Line {
  std::string_view what;
  std::string where;
  std::string values;
};

std::string lines_text(const std::vector<Line>& lines) {
  size_t what_width = 0;
  size_t where_width = 0;
  for (const Line& line : lines) {
    what_width = std::max(what_width, line.what.size());
    where_width = std::max(where_width, display_width(line.where));
  }
  std::string text;
  for (const Line& line : lines) {
    text += padded(std::string(line.what), what_width) + "  " + padded(line.where, where_width) +
            "  " + line.values + "\n";
  }
  return text;
}

// How many items a listing has in each family and in each of its packages.
using Sizes = std::map<std::string, size_t>;

Sizes sizes_of(const Listing& listing) {
  Sizes sizes;
  for (const ListedItem& listed : listing) {
    ++sizes[listed.item.family];
    ++sizes[listed.item.family + "/" + listed.item.package];
  }
  return sizes;
}

// Families and packages of which all items have come, or gone, get one line instead of one each.
class Groups {
 public:
  Groups(const std::vector<Change>& changes, const Listing& before, const Listing& after)
      : before_(sizes_of(before)), after_(sizes_of(after)) {
    Listing gone;
    Listing come;
    for (const Change& change : changes) {
      if (!change.after) {
        gone.push_back(*change.before);
      } else if (!change.before) {
        come.push_back(*change.after);
      }
    }
    gone_ = sizes_of(gone);
    come_ = sizes_of(come);
  }

  // "PoE", "SDRAM/SDRAM2", or "" for an item that stands for itself.
  std::string group_of(const Change& change) const {
    const Sizes& all = change.after ? after_ : before_;
    const Sizes& changed = change.after ? come_ : gone_;
    const Item& item = change.item();
    for (const std::string& group : {item.family, item.family + "/" + item.package}) {
      const auto found = changed.find(group);
      if (found != changed.end() && found->second == all.at(group)) {
        return group;
      }
    }
    return "";
  }

  size_t size(const Change& change, const std::string& group) const {
    return (change.after ? after_ : before_).at(group);
  }

 private:
  Sizes before_;
  Sizes after_;
  Sizes gone_;
  Sizes come_;
};

std::string changes_text(const std::vector<Change>& changes, const Groups& groups) {
  std::vector<Line> lines;
  std::set<std::string> told;
  for (const Change& change : changes) {
    const bool is_both = change.before && change.after;
    const std::string group = is_both ? "" : groups.group_of(change);
    if (group.empty()) {
      lines.push_back(
          {change_name(change.kind), printable(path_of(change.item())), values_text(change)});
    } else if (told.insert(group).second) {
      lines.push_back({change_name(change.kind), printable(group),
                       fmt::format("all {} items", groups.size(change, group))});
    }
  }
  return lines_text(lines);
}

std::string summary(const Comparison& comparison) {
  const std::string moving =
      comparison.moving == 0
          ? ""
          : fmt::format("; {} measured values moved (--all shows them)", comparison.moving);
  const std::string redacted =
      comparison.redacted == 0 ? ""
                               : fmt::format("; {} redacted ones left out", comparison.redacted);
  return fmt::format(
      "{} of {} items the same{}{}\n",
      comparison.compared - comparison.moving -
          static_cast<size_t>(std::count_if(comparison.changes.begin(), comparison.changes.end(),
                                            [](const Change& c) { return c.before && c.after; })),
      comparison.compared, moving, redacted);
}

JsonPtr json_change(const Change& change) {
  JsonPtr object = own(json_object());
  std::string name(change_name(change.kind));
  std::replace(name.begin(), name.end(), ' ', '_');
  put(object, "change", json_text(name));
  put(object, "id", json_text(id_text(change.item().id)));
  put(object, "path", json_text(path_of(change.item())));
  const auto put_listed = [&object](const char* key, const std::optional<ListedItem>& listed) {
    put(object, key, listed ? json_item(listed->item, listed->reading) : own(json_null()));
  };
  put_listed("before", change.before);
  put_listed("after", change.after);
  return object;
}

std::string json_text_of(const Comparison& comparison) {
  JsonPtr changes = own(json_array());
  for (const Change& change : comparison.changes) {
    append(changes, json_change(change));
  }
  JsonPtr document = own(json_object());
  put(document, "ok", own(json_true()));
  put(document, "same", own(json_boolean(comparison.changes.empty())));
  put(document, "compared", own(json_integer(static_cast<json_int_t>(comparison.compared))));
  put(document, "moving", own(json_integer(static_cast<json_int_t>(comparison.moving))));
  put(document, "changes", std::move(changes));
  return json_document(document.get(), JsonLayout::indented);
}

ExitCode run_diff(const GlobalOptions& globals, const DiffOptions& options) try {
  const Listing before = listing_of(globals, options.before);
  const Listing after = listing_of(globals, options.after);
  const Comparison comparison = compare(before, after, options.all);
  if (options.json) {
    print(json_text_of(comparison));
  } else {
    const Groups groups(comparison.changes, before, after);
    print(changes_text(comparison.changes, groups) + summary(comparison));
  }
  return comparison.changes.empty() ? ExitCode::success : ExitCode::item_failed;
} catch (const HostError& error) {
  // As with diff(1), 1 says that there are differences, and all trouble is 2.
  throw HostError(Fault::usage, error.what(), error.status());
}

}  // namespace

void add_diff(CommandLine& line) {
  auto options = std::make_shared<DiffOptions>();
  CLI::App& command =
      line.add({"diff", "Tell what has changed between two recordings or listings",
                "kovactl diff last-good.json now",
                "0 the same, 1 something differs, 2 trouble, 3 no device"},
               [options](const GlobalOptions& globals) { return run_diff(globals, *options); });
  command.add_option("A", options->before, "A recording, a file of list --json, or 'now'")
      ->required();
  command.add_option("B", options->after, "The same, for the newer one")->required();
  command.add_flag("--all", options->all, "Show measured values that merely moved as well");
  command.add_flag("--json", options->json, "Print JSON");
}

}  // namespace kovactl
