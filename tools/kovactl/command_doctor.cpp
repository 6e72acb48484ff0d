// `kovactl doctor`: step by step from the module's file to the last item, each with a verdict, and
// what to do next.
#include <fmt/format.h>

#include <algorithm>

#include "include/kova_iot.h"
#include "tools/host/judgements/plausibility.h"
#include "tools/host/model/status_text.h"
#include "tools/host/session/diagnosis.h"
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
    if (std::find(advice_.begin(), advice_.end(), text) == advice_.end()) {
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
std::string ask_codes(const Item& item, const JsonPtr& entry) {
  const auto device = DirectDevice::in_process();
  if (!device || item.facts.codes.empty()) {
    return "";
  }
  std::vector<std::string> texts;
  JsonPtr array = own(json_array());
  for (const uint32_t code : item.facts.codes) {
    const DeviceAnswer answer = device->read(code);
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

void add_item(const Item& item, const std::string& what, Record& record) {
  const JsonPtr codes = own(json_object());
  const std::string answers = ask_codes(item, codes);
  const JsonPtr& entry =
      record.add("item", Verdict::failed, fmt::format("{} {}{}", title(item), what, answers));
  put(entry, "id", json_text(id_text(item.id)));
  put(entry, "path", json_text(path_of(item)));
  json_object_update(entry.get(), codes.get());
}

void check_items(const Session& session, Record& record) {
  const std::vector<Item> items = distinct(Inventory::of(session).items());
  const Readings readings = read_with_progress(session, items);
  const auto failed = std::count_if(readings.begin(), readings.end(), [](const auto& entry) {
    return entry.second.state == Reading::State::failed;
  });
  record.add("items", failed == 0 ? Verdict::ok : Verdict::failed,
             fmt::format("{} of {} items can be read",
                         readings.size() - static_cast<size_t>(failed), readings.size()));
  for (const Item& item : items) {
    const Reading& reading = readings.at(item.id);
    if (const auto wrong = nonsense(item, reading)) {
      add_item(item, *wrong, record);
      record.advise(
          "what answers nonsense is broken, not connected, or described wrongly by the "
          "device: look at the device codes named above");
    } else if (reading.state == Reading::State::failed) {
      add_item(item, "is unreadable: " + failure_text(item, reading), record);
      record.advise(
          "items that fail: look at the part itself (a fan, a sensor, a module); the "
          "device codes above are what its maker asks for");
    }
    if (!item.published) {
      record.advise(
          "items that could not be read when the module started are missing from its "
          "document until the next start");
    }
  }
}

// The exit code.
ExitCode examine(const GlobalOptions& globals, Record& record) {
  std::unique_ptr<Module> module;
  try {
    module = std::make_unique<Module>(globals.host);
  } catch (const HostError& error) {
    record.add("module", Verdict::failed, error.what());
    record.advise("name the module's file with --module, or install the package kova-iot again");
    return ExitCode::no_device;
  }
  record.add("module", Verdict::ok, "module: " + module->file().native());
  std::unique_ptr<Session> session;
  std::string refusal;
  try {
    const Progress progress("starting the module");
    session = std::make_unique<Session>(*module, globals.host.simulate);
  } catch (const HostError& error) {
    refusal = error.what();
  }
  const DeviceDiagnosis diagnosis = diagnose_device();
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
  check_items(*session, record);
  return record.failed() ? ExitCode::item_failed : ExitCode::success;
}

}  // namespace

void add_doctor(CommandLine& line) {
  auto json = std::make_shared<bool>(false);
  CLI::App& command =
      line.add({"doctor", "Find out what is wrong, step by step", "kovactl doctor",
                "0 all well, 1 an item is wrong, 2 usage, 3 no device"},
               [json](const GlobalOptions& globals) {
                 Record record;
                 const ExitCode exit_code = examine(globals, record);
                 print(*json ? record.json(exit_code) : record.text(Painter::for_stdout()));
                 return exit_code;
               });
  command.add_flag("--json", *json, "Print JSON");
}

}  // namespace kovactl
