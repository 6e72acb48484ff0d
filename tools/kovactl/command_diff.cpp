// `kovactl diff`: what has changed between two recordings or listings, or since one of them.
#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "tools/host/comparison.h"
#include "tools/host/json_report.h"
#include "tools/host/json_writer.h"
#include "tools/host/plain_text.h"
#include "tools/host/value_text.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"

namespace kovactl {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNow = "now";

struct Options {
  std::string before;
  std::string after;
  bool json = false;
  bool all = false;
};

[[noreturn]] void fail_with(int error, const char* what) {
  throw std::system_error(error, std::generic_category(), what);
}

// Runs this program with its stdout in a pipe, and gives what it has printed there.
std::string output_of(std::vector<std::string> arguments) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    fail_with(errno, "pipe");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  std::vector<char*> words;
  for (std::string& argument : arguments) {
    words.push_back(argument.data());
  }
  words.push_back(nullptr);
  pid_t child = 0;
  const int error = posix_spawn(&child, "/proc/self/exe", &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::string text;
  char buffer[65536];
  ssize_t size = 0;
  while (error == 0 && ((size = read(ends[0], buffer, sizeof buffer)) > 0 || errno == EINTR)) {
    text.append(buffer, static_cast<size_t>(std::max<ssize_t>(size, 0)));
    errno = 0;
  }
  close(ends[0]);
  if (error != 0) {
    fail_with(error, "cannot start kovactl");
  }
  waitpid(child, nullptr, 0);
  return text;
}

// A child plays the recording: a process has one device library for all its life.
Listing play(const GlobalOptions& globals, const std::string& file) {
  std::vector<std::string> arguments = {"kovactl", "--simulate", fs::absolute(file)};
  if (!globals.host.module.empty()) {
    arguments.insert(arguments.end(), {"--module", globals.host.module});
  }
  arguments.insert(arguments.end(), {"list", "--json"});
  const std::string json = output_of(std::move(arguments));
  const JsonPtr document(json_loadb(json.data(), json.size(), 0, nullptr));
  const char* message =
      json_string_value(json_object_get(json_object_get(document.get(), "error"), "message"));
  if (message != nullptr) {
    // The simulator's messages begin with the file's name.
    const std::string text = message;
    throw HostError(Fault::usage, text.find(file) == std::string::npos ? file + ": " + text : text);
  }
  return parse_listing(json, file);
}

std::string read_whole(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  if (!stream || !(text << stream.rdbuf())) {
    throw HostError(Fault::usage, fmt::format("cannot read '{}'; give a recording, a file that "
                                              "list --json has written, or 'now'",
                                              file));
  }
  return text.str();
}

Listing listing_of(const GlobalOptions& globals, const std::string& name) {
  if (name == kNow) {
    return list_machine(*open_session(globals));
  }
  const std::string text = read_whole(name);
  return is_listing(text) ? parse_listing(text, name) : play(globals, name);
}

std::string value_text(const Change& change, const std::optional<ListedItem>& listed) {
  if (!listed) {
    return "-";
  }
  const bool is_range = change.kind == ChangeKind::range;
  const std::string text =
      is_range ? range_text(listed->item) : value_with_unit(listed->item, listed->reading);
  return printable(text.empty() ? "-" : text);
}

// "reads again  PIC/Settings/Low battery cut-off  unreadable: ... -> 10.5 V"
std::string change_lines(const std::vector<Change>& changes) {
  size_t kind_width = 0;
  size_t path_width = 0;
  for (const Change& change : changes) {
    kind_width = std::max(kind_width, change_name(change.kind).size());
    path_width = std::max(path_width, display_width(printable(path_of(change.item()))));
  }
  std::string text;
  for (const Change& change : changes) {
    text += padded(std::string(change_name(change.kind)), kind_width) + "  " +
            padded(printable(path_of(change.item())), path_width) + "  " +
            value_text(change, change.before) + " -> " + value_text(change, change.after) + "\n";
  }
  return text;
}

// One line for a family of which everything has come or gone.
std::string family_lines(std::vector<Change>& changes, const Listing& listing, ChangeKind kind) {
  std::map<std::string, size_t> sizes;
  for (const ListedItem& listed : listing) {
    ++sizes[listed.item.family];
  }
  std::map<std::string, size_t> changed;
  for (const Change& change : changes) {
    changed[change.item().family] += change.kind == kind ? 1 : 0;
  }
  std::string text;
  for (const auto& [family, size] : sizes) {
    if (changed[family] == size) {
      text += fmt::format("{}  {}, all {} items\n", change_name(kind), printable(family), size);
    }
  }
  std::erase_if(changes, [&](const Change& change) {
    return change.kind == kind && changed[change.item().family] == sizes[change.item().family];
  });
  return text;
}

std::string summary(const Comparison& comparison) {
  const std::string moving =
      comparison.moving == 0
          ? ""
          : fmt::format("; {} measured values moved (--all shows them)", comparison.moving);
  return fmt::format(
      "{} of {} items the same{}\n",
      comparison.compared - comparison.moving -
          static_cast<size_t>(std::count_if(comparison.changes.begin(), comparison.changes.end(),
                                            [](const Change& c) { return c.before && c.after; })),
      comparison.compared, moving);
}

JsonPtr json_change(const Change& change) {
  JsonPtr object = own(json_object());
  put(object, "change", json_text(change_name(change.kind)));
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

ExitCode run(const GlobalOptions& globals, const Options& options) try {
  const Listing before = listing_of(globals, options.before);
  const Listing after = listing_of(globals, options.after);
  Comparison comparison = compare(before, after, options.all);
  const bool same = comparison.changes.empty();
  if (options.json) {
    print(json_text_of(comparison));
  } else {
    const std::string total = summary(comparison);
    const std::string families = family_lines(comparison.changes, before, ChangeKind::vanished) +
                                 family_lines(comparison.changes, after, ChangeKind::appeared);
    print(families + change_lines(comparison.changes) + total);
  }
  return same ? ExitCode::success : ExitCode::item_failed;
} catch (const HostError& error) {
  // As with diff(1), 1 says that there are differences, and all trouble is 2.
  throw HostError(Fault::usage, error.what(), error.status());
}

}  // namespace

void add_diff(CommandLine& line) {
  auto options = std::make_shared<Options>();
  CLI::App& command =
      line.add({"diff", "Tell what has changed between two recordings or listings",
                "kovactl diff last-good.json now"},
               [options](const GlobalOptions& globals) { return run(globals, *options); });
  command.add_option("A", options->before, "A recording, a file of list --json, or 'now'")
      ->required();
  command.add_option("B", options->after, "The same, for the newer one")->required();
  command.add_flag("--all", options->all, "Show measured values that merely moved as well");
  command.add_flag("--json", options->json, "Print JSON");
}

}  // namespace kovactl
