// `kovactl diff`: what has changed between two recordings or listings, or since one of them.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "tools/host/export/json_report.h"
#include "tools/host/model/status_text.h"
#include "tools/host/record/comparison.h"
#include "tools/host/system/duration.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/system/regular_file.h"
#include "tools/host/system/typed_number.h"
#include "tools/host/values/shown_value.h"
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
  std::string at;
  bool json = false;
  bool all = false;
};

// A machine to compare; `later` only of a recording.
struct Side {
  std::string name;
  Listing listing;
  std::optional<std::vector<LaterFailure>> later;
};

// As a recording; nothing if it is another machine description, which is listed as ever.
std::optional<Side> play_recording(const GlobalOptions& globals, const HostOptions& options,
                                   const std::string& file, const std::string& at) {
  const auto host = globals.device->host();
  std::optional<Replay> replay;
  try {
    replay.emplace(host, options);
  } catch (const WorkerDeath&) {
    throw;
  } catch (const HostError&) {
    if (!at.empty()) {
      throw;
    }
    return std::nullopt;
  }
  const Session session(host, true);
  const auto time = at.empty() ? std::chrono::milliseconds(0)
                               : checked_duration(at, "time", std::chrono::milliseconds(0));
  RecordedListing recorded = list_recording(*replay, session, time);
  return Side{file, std::move(recorded.listing), std::move(recorded.later)};
}

// Another worker plays the recording: a process has one device library for all its life.
Side play(const GlobalOptions& globals, const std::string& file, const std::string& at) {
  const HostOptions options{globals.host.module, true, fs::absolute(file)};
  try {
    if (auto side = play_recording(globals, options, file, at)) {
      return std::move(*side);
    }
    return {file, list_machine(*globals.device->start(options)), std::vector<LaterFailure>()};
  } catch (const HostError& error) {
    // The simulator's messages begin with the file's name.
    const std::string text = error.what();
    throw HostError(Fault::usage, text.find(file) == std::string::npos ? file + ": " + text : text);
  }
}

std::string read_whole(const std::string& file) {
  try {
    return read_file_or_stdin(file);
  } catch (const HostError& error) {
    throw HostError(error.fault(), fmt::format("{}; give a recording, a file that list --json has "
                                               "written, or 'now'",
                                               error.what()));
  }
}

Side side_of(const GlobalOptions& globals, const std::string& name, const std::string& at) {
  if (name == kNow) {
    return {name, list_machine(*open_session(globals)), {}};
  }
  const std::string text = read_whole(name);
  if (is_list_document(text)) {
    return {name, listing_from(parse_list_document(text, "'" + name + "'")), {}};
  }
  if (name == kStandardStream) {
    throw HostError(Fault::usage,
                    "stdin has no output of list --json; a recording is read more than once and "
                    "needs a file");
  }
  return play(globals, name, at);
}

const Item& item_of(const Side& side, const LaterFailure& failure) {
  return std::find_if(side.listing.begin(), side.listing.end(),
                      [&](const ListedItem& listed) { return listed.item.id == failure.id; })
      ->item;
}

// As --at takes it, to the millisecond.
std::string seconds_text(std::chrono::milliseconds time) {
  return fmt::format("{:.12g}s", static_cast<double>(time.count()) / 1000);
}

// What fails later in a recording, up to so many lines.
std::string later_text(const Side& side) {
  constexpr size_t kMostLines = 8;
  std::string text;
  if (!side.later || side.later->empty()) {
    return text;
  }
  for (const LaterFailure& failure : *side.later) {
    if (&failure - side.later->data() == kMostLines) {
      text += fmt::format("later in {}: {} more\n", printable(side.name),
                          side.later->size() - kMostLines);
      break;
    }
    text += fmt::format("later in {}: {} fails at {}: {}\n", printable(side.name),
                        printable(path_of(item_of(side, failure))), seconds_text(failure.time),
                        read_failure(failure.status));
  }
  return text;
}

// True if something fails later in one of two recordings only.
bool differs_later(const Side& before, const Side& after) {
  const auto ids = [](const std::vector<LaterFailure>& later) {
    std::set<uint32_t> result;
    for (const LaterFailure& failure : later) {
      result.insert(failure.id);
    }
    return result;
  };
  return before.later && after.later && ids(*before.later) != ids(*after.later);
}

void append_later(const JsonPtr& array, const char* side_name, const Side& side) {
  for (const LaterFailure& failure : side.later.value_or(std::vector<LaterFailure>())) {
    JsonPtr entry = own(json_object());
    put(entry, "in", json_text(side_name));
    put(entry, "id", json_text(id_text(failure.id)));
    put(entry, "path", json_text(path_of(item_of(side, failure))));
    put(entry, "at", own(json_real(static_cast<double>(failure.time.count()) / 1000)));
    put(entry, "failure", json_text(read_failure(failure.status)));
    put_status(entry, failure.status);
    append(array, std::move(entry));
  }
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

std::string json_text_of(const Comparison& comparison, const Side& before, const Side& after) {
  JsonPtr changes = own(json_array());
  for (const Change& change : comparison.changes) {
    append(changes, json_change(change));
  }
  JsonPtr document = own(json_object());
  put(document, "ok", own(json_true()));
  put(document, "same",
      own(json_boolean(comparison.changes.empty() && !differs_later(before, after))));
  put(document, "compared", own(json_integer(static_cast<json_int_t>(comparison.compared))));
  put(document, "moving", own(json_integer(static_cast<json_int_t>(comparison.moving))));
  put(document, "changes", std::move(changes));
  JsonPtr later = own(json_array());
  append_later(later, "before", before);
  append_later(later, "after", after);
  put(document, "later", std::move(later));
  return json_document(document.get(), JsonLayout::indented);
}

ExitCode run_diff(const GlobalOptions& globals, const DiffOptions& options) try {
  const Side before = side_of(globals, options.before, options.at);
  const Side after = side_of(globals, options.after, options.at);
  const Comparison comparison = compare(before.listing, after.listing, options.all);
  if (options.json) {
    print(json_text_of(comparison, before, after));
  } else {
    const Groups groups(comparison.changes, before.listing, after.listing);
    print(changes_text(comparison.changes, groups) + summary(comparison) + later_text(before) +
          later_text(after));
  }
  return comparison.changes.empty() && !differs_later(before, after) ? ExitCode::success
                                                                     : ExitCode::item_failed;
} catch (const HostError& error) {
  // As with diff(1), 1 says that there are differences, and all trouble is 2.
  throw HostError(Fault::usage, error.what(), error.status());
}

}  // namespace

void add_diff(CommandLine& line) {
  auto options = std::make_shared<DiffOptions>();
  CLI::App& command =
      line.add({"diff", "Tell what has changed between two recordings or listings",
                "kovactl diff last-good.json now", "0 the same, 1 something differs, 2 trouble"},
               [options](const GlobalOptions& globals) { return run_diff(globals, *options); });
  command
      .add_option("A", options->before,
                  "A recording, a file of list --json or - for stdin, or 'now'")
      ->type_name("FILE|now")
      ->required();
  command.add_option("B", options->after, "The same, for the newer one")
      ->type_name("FILE|now")
      ->required();
  command.add_option("--at", options->at, "Compare recordings at this time since they began")
      ->type_name("TIME");
  command.add_flag("--all", options->all, "Show measured values that merely moved as well");
  command.add_flag("--json", options->json, "Print JSON");
}

}  // namespace kovactl
