// `kovactl doctor`: step by step from the module's file to the last item, each with a verdict, and
// what to do next.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "include/kova_iot.h"
#include "tools/host/judgements/judge.h"
#include "tools/host/model/status_text.h"
#include "tools/host/session/diagnosis.h"
#include "tools/host/session/module_release.h"
#include "tools/host/system/json_writer.h"
#include "tools/host/system/plain_text.h"
#include "tools/host/values/shown_value.h"
#include "tools/kovactl/command_support.h"
#include "tools/kovactl/output.h"
#include "tools/kovactl/progress.h"
#include "tools/kovactl/terminal.h"

namespace kovactl {

using namespace kova_host;
namespace {

enum class Verdict { ok, note, failed };

const char* word_of(Verdict verdict) {
  return verdict == Verdict::ok ? "ok" : verdict == Verdict::note ? "note" : "failed";
}

// Collects the steps and the advice.
class Record {
 public:
  // Gives the step's JSON object, for details.
  const JsonPtr& add(const char* step, Verdict verdict, const std::string& message) {
    failed_ = failed_ || verdict == Verdict::failed;
    JsonPtr entry = own(json_object());
    put(entry, "step", json_text(step));
    put(entry, "verdict", json_text(word_of(verdict)));
    put(entry, "message", json_text(message));
    steps_.push_back(std::move(entry));
    return steps_.back();
  }

  // Each piece of advice is given once.
  void advise(const std::string& text) {
    if (!text.empty() && std::find(advice_.begin(), advice_.end(), text) == advice_.end()) {
      advice_.push_back(text);
    }
  }

  bool failed() const { return failed_; }

  std::string text(const Painter& paint) const {
    const auto part = [](const JsonPtr& step, const char* key) {
      return printable(json_string_value(json_object_get(step.get(), key)));
    };
    std::string text;
    for (const JsonPtr& step : steps_) {
      const std::string verdict = part(step, "verdict");
      const Style style = verdict == word_of(Verdict::failed) ? Style::alarm : Style::plain;
      text += fmt::format("{}  {:<7}  {}\n", paint(style, fmt::format("{:<6}", verdict)),
                          part(step, "step"), part(step, "message"));
    }
    if (advice_.empty()) {
      return text + "\nAll is well.\n";
    }
    for (const std::string& advice : advice_) {
      text += fmt::format("\nWhat to do: {}", advice);
    }
    return text + '\n';
  }

  std::string json(ExitCode exit_code) const {
    JsonPtr steps = own(json_array());
    for (const JsonPtr& step : steps_) {
      append(steps, own(json_incref(step.get())));
    }
    JsonPtr advice = own(json_array());
    for (const std::string& text : advice_) {
      append(advice, json_text(text));
    }
    JsonPtr document = own(json_object());
    put(document, "ok", own(json_boolean(exit_code == ExitCode::success)));
    put(document, "exit_code", own(json_integer(static_cast<int>(exit_code))));
    put(document, "steps", std::move(steps));
    put(document, "advice", std::move(advice));
    return json_document(document.get(), JsonLayout::indented);
  }

 private:
  std::vector<JsonPtr> steps_;
  std::vector<std::string> advice_;
  bool failed_ = false;
};

void check_library(const DeviceDiagnosis& diagnosis, Record& record) {
  for (const LibraryAttempt& attempt : diagnosis.attempts) {
    if (attempt.file == diagnosis.attempts.back().file && !diagnosis.library.empty()) {
      record.add("library", Verdict::ok, "device library: " + diagnosis.library);
      return;
    }
    record.add("library", diagnosis.library.empty() ? Verdict::failed : Verdict::note,
               attempt.exists ? "cannot load " + attempt.error : attempt.file + " is not there");
  }
  const bool any = std::any_of(diagnosis.attempts.begin(), diagnosis.attempts.end(),
                               [](const LibraryAttempt& attempt) { return attempt.exists; });
  record.advise(any ? "install the device library again, for x86-64 and whole"
                    : "install the maker's device library; --simulate shows a simulated machine");
}

void check_entries(const DeviceDiagnosis& diagnosis, Record& record) {
  const auto check = [&](bool there, const char* entry, Verdict without, const char* advice) {
    record.add("entries", there ? Verdict::ok : without,
               fmt::format("{} is {}", entry, there ? "there" : "missing"));
    if (!there) {
      record.advise(advice);
    }
  };
  check(diagnosis.has_read_entry, kReadEntry, Verdict::failed,
        "install the device library that belongs to this machine: this one cannot read");
  check(diagnosis.has_write_entry, kWriteEntry, Verdict::failed,
        "settings cannot be written: ask the maker for a device library that can");
}

void check_families(const DeviceDiagnosis& diagnosis, Record& record) {
  for (const FamilyPresence& presence : diagnosis.families) {
    const FamilyData& family = *presence.family;
    // The battery tells by an unanswered read that it is not there.
    const bool broken = presence.answer.status != 0 && !family.present_if_readable;
    const JsonPtr& entry = record.add(
        "family",
        presence.present ? Verdict::ok
        : broken         ? Verdict::failed
                         : Verdict::note,
        fmt::format("{} is {} ({})", family.name, presence.present ? "present" : "not present",
                    presence_text(presence)));
    put(entry, "family", json_text(family.name));
    if (broken) {
      record.advise(
          "a presence read that fails hides its whole family: check the device's wiring "
          "and driver, and whether this user may use it");
    }
  }
  if (!diagnosis.families.empty() && !diagnosis.any_present()) {
    record.advise("no family is present: check that the device library is this machine's");
  }
}

// "device code 0x822005 answers 0x5"; what the module made of it may not tell which one failed.
std::string ask_codes(const Session& session, const Item& item, const JsonPtr& entry) {
  const std::vector<uint32_t>& codes = item.facts.codes;
  const auto answers = session.read_codes(codes);
  if (answers.empty()) {
    return "";
  }
  std::vector<std::string> texts;
  JsonPtr array = own(json_array());
  for (size_t i = 0; i < codes.size(); ++i) {
    const uint32_t code = codes[i];
    const DeviceAnswer& answer = answers[i];
    JsonPtr detail = own(json_object());
    put(detail, "device_code", json_text(id_text(code)));
    put(detail, "status", own(json_integer(answer.status)));
    if (answer.status == 0) {
      put(detail, "word", own(json_integer(answer.word)));
    }
    append(array, std::move(detail));
    texts.push_back(fmt::format("0x{:X} {}", code,
                                answer.status == 0 ? fmt::format("reads 0x{:X}", answer.word)
                                                   : "answers " + status_code(answer.status)));
  }
  put(entry, "device_codes", std::move(array));
  return fmt::format("; device code {}", fmt::join(texts, ", "));
}

void add_finding(const Session& session, const Item& item, const Finding& finding, Record& record) {
  const JsonPtr codes = own(json_object());
  const std::string answers = ask_codes(session, item, codes);
  const JsonPtr& entry = record.add(
      "item", Verdict::failed, fmt::format("{} {}{}", title(item), finding.message(), answers));
  put(entry, "id", json_text(id_text(item.id)));
  put(entry, "path", json_text(finding.path));
  put(entry, "rule", json_text(finding.kind));
  put(entry, "severity", json_text(severity_name(finding.severity)));
  json_object_update(entry.get(), codes.get());
  record.advise(finding.action);
}

struct TimedRead {
  const Item* item = nullptr;
  std::chrono::steady_clock::duration time{};
};

// Every item, and how long each read took.
Readings read_timed(const Session& session, const std::vector<Item>& items,
                    std::vector<TimedRead>& times) {
  using std::chrono::steady_clock;
  const Progress progress("reading", items);
  Readings readings;
  for (const Item& item : items) {
    const auto start = steady_clock::now();
    readings.emplace(item.id, read_item(session, item));
    times.push_back({&item, steady_clock::now() - start});
  }
  return readings;
}

// The three slowest, and what all took: a busy bus shows here.
void add_times(std::vector<TimedRead> times, Record& record) {
  using std::chrono::duration;
  const auto seconds = [](const TimedRead& read) { return duration<double>(read.time).count(); };
  double all = 0;
  for (const TimedRead& read : times) {
    all += seconds(read);
  }
  const size_t shown = std::min<size_t>(3, times.size());
  std::partial_sort(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(shown), times.end(),
                    [](const TimedRead& a, const TimedRead& b) { return a.time > b.time; });
  times.resize(shown);
  JsonPtr slowest = own(json_array());
  std::vector<std::string> texts;
  for (const TimedRead& read : times) {
    JsonPtr entry = own(json_object());
    put(entry, "id", json_text(id_text(read.item->id)));
    put(entry, "path", json_text(label_of(*read.item)));
    put(entry, "seconds", own(json_real(seconds(read))));
    append(slowest, std::move(entry));
    texts.push_back(fmt::format("{} {:.1f} ms", title(*read.item), 1000 * seconds(read)));
  }
  const JsonPtr& step = record.add(
      "times", Verdict::ok,
      fmt::format("all items in {:.1f} ms; slowest: {}", 1000 * all, fmt::join(texts, ", ")));
  put(step, "seconds", own(json_real(all)));
  put(step, "slowest", std::move(slowest));
}

void check_items(const Session& session, const RulesFile& rules, Record& record) {
  const std::vector<Item> items = distinct(Inventory::of(session).items());
  const Thresholds thresholds = thresholds_of(rules, items);
  std::vector<TimedRead> times;
  const Readings readings = read_timed(session, items, times);
  const auto failed = std::count_if(readings.begin(), readings.end(), [](const auto& entry) {
    return entry.second.state == Reading::State::failed;
  });
  record.add("items", failed == 0 ? Verdict::ok : Verdict::failed,
             fmt::format("{} of {} items can be read",
                         readings.size() - static_cast<size_t>(failed), readings.size()));
  add_times(std::move(times), record);
  for (const Finding& finding : judge(items, readings, thresholds)) {
    const auto item = std::find_if(items.begin(), items.end(),
                                   [&](const Item& one) { return one.id == finding.id; });
    add_finding(session, *item, finding, record);
  }
  if (std::any_of(items.begin(), items.end(), [](const Item& item) { return !item.published; })) {
    record.advise(
        "Items that could not be read when the module started are missing from its document until "
        "the next start.");
  }
}

// The exit code.
ExitCode examine(const GlobalOptions& globals, const RulesFile& rules, Record& record) {
  const std::shared_ptr<DeviceHost> host = globals.device->host();
  try {
    const std::string file = host->load({globals.host}).module_file;
    record.add("module", Verdict::ok, "module: " + file + release_text(file));
  } catch (const HostError& error) {
    record.add("module", Verdict::failed, error.what());
    record.advise("name the module's file with --module, or install the package kova-iot again");
    return ExitCode::no_device;
  }
  std::unique_ptr<Session> session;
  std::string refusal;
  try {
    const Progress progress("starting the module");
    session = std::make_unique<Session>(host, globals.host.simulate);
  } catch (const HostError& error) {
    refusal = error.what();
  }
  const DeviceDiagnosis diagnosis = host->diagnose();
  check_library(diagnosis, record);
  if (!diagnosis.library.empty()) {
    check_entries(diagnosis, record);
    check_families(diagnosis, record);
  }
  record.add("start", session ? Verdict::ok : Verdict::failed,
             session ? "the module starts" : refusal);
  if (!session) {
    record.advise("nothing can be read until the module starts");
    return ExitCode::no_device;
  }
  check_items(*session, rules, record);
  return record.failed() ? ExitCode::item_failed : ExitCode::success;
}

}  // namespace

void add_doctor(CommandLine& line) {
  auto json = std::make_shared<bool>(false);
  auto rules = std::make_shared<std::string>();
  CLI::App& command =
      line.add({"doctor", "Find out what is wrong, step by step", "kovactl doctor",
                "0 all well, 1 an item is wrong, 2 usage, 3 no device"},
               [json, rules](const GlobalOptions& globals) {
                 Record record;
                 const ExitCode exit_code = examine(globals, rules_from(*rules), record);
                 print(*json ? record.json(exit_code) : record.text(Painter::for_stdout()));
                 return exit_code;
               });
  add_rules_option(command, *rules);
  command.add_flag("--json", *json, "Print JSON");
}

}  // namespace kovactl
