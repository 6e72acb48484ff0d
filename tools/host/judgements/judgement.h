// What a judgement is: the rule, and what it finds on a machine.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/host/values/reading.h"

namespace kova_host {

// In the order of urgency. Unknown: there is a limit for an item that has no number.
enum class Severity { unknown, warning, critical };

// "unknown", "warning", "critical"
std::string_view severity_name(Severity severity);

// The items and readings of one sweep, found by path: what a rule may look at beside its own item.
class SweepView {
 public:
  // Both have to outlive the view. An item without a reading was not asked; it counts as unknown.
  SweepView(const std::vector<Item>& items, const Readings& readings)
      : items_(items), readings_(readings) {}

  const std::vector<Item>& items() const { return items_; }

  // Null for an item that was not asked.
  const Reading* reading(uint32_t id) const;

  // The number of the item of that path (FAMILY/PACKAGE/NAME), and the label of a state. Nothing,
  // or "", without the item or a good reading of it.
  std::optional<double> number(std::string_view path) const;
  std::string_view label(std::string_view path) const;

 private:
  const Item* find(std::string_view path) const;
  const Reading* good_reading(const Item* item) const;

  const std::vector<Item>& items_;
  const Readings& readings_;
};

// Which items a rule looks at: those that fit every column that is not empty.
struct LooksAt {
  std::string_view path = {};      // FAMILY/PACKAGE/NAME, with the wildcards of a shell
  std::string_view quantity = {};  // what the unit measures: "temperature"
  bool measured = false;           // no settings, factory defaults or identities
};

bool looks_at(const LooksAt& what, const Item& item);
bool fits_path(std::string_view pattern, const Item& item);

// What a rule has seen on an item.
struct Evidence {
  std::string text;     // the value, and what it was held against: "0 RPM"
  double distance = 0;  // how far beyond the limit, in the item's unit; 0 where there is no measure
};

struct Judgement;

// An item before a rule.
struct Case {
  const Judgement& rule;
  const SweepView& sweep;
  const Item& item;
  const Reading& reading;
};
using Condition = std::optional<Evidence> (*)(const Case& at);

// One rule. The texts stand in the answers of the tools, in docs/fleet.md and in the alert rules of
// the package, which are made from them.
struct Judgement {
  std::string_view kind = {};   // stable: files and documents name the rule by it
  std::string_view alert = {};  // its name among Prometheus' alerts
  Severity severity = Severity::warning;
  std::chrono::minutes held = {};  // a condition has to hold so long before it counts in a course
  LooksAt looks_at = {};
  bool asks_peers = false;           // the others that it looks at count too
  std::string_view asks = {};        // paths of what it needs beside them, with "|" in between
  std::optional<double> limit = {};  // in the base units of metrics, or a share: `when` says what
  bool on_value = false;             // gives way to a limit that the user gave the item
  Condition condition = nullptr;     // null: only who watches the machine from outside can tell
  std::string_view subject = {};     // of the sentence, where it is not an item
  std::string_view says = {};    // the sentence after its subject: "stands still while others turn"
  std::string_view mark = {};    // the same beside a value: "STOPPED"
  std::string_view when = {};    // the row of docs/fleet.md: fires when ...; {limit}, {percent}
  std::string_view action = {};  // what to do; {id} is the item's
  std::string_view expression = {};  // the condition in PromQL; {limit}
  std::string_view shown = {};       // PromQL's $value as the sentence's end; "" for none
};

// Something that needs attention.
struct Finding {
  std::string kind;  // of the rule; "limit" for one of the user's
  Severity severity = Severity::warning;
  uint32_t id = 0;
  std::string path;
  std::string says;      // "stands still while others turn"
  std::string evidence;  // "0 RPM"
  std::string mark;
  std::string action;
  double distance = 0;
  std::string value;  // as people see it: "0 RPM"

  // "stands still while others turn: 0 RPM"
  std::string message() const;

  // "TRK-7000/Onboard fan speeds/TRK7K OB fan 1 stands still while others turn: 0 RPM"
  std::string sentence() const;
};

}  // namespace kova_host
