// Prints what is made from the table of judgements: the rows of docs/fleet.md's table, or the alert
// rules for Prometheus. Usage: judgement_document --table | --alerts
#include <fmt/format.h>

#include <string>
#include <string_view>

#include "tools/host/judgements/judgement_table.h"

namespace {

using kova_host::Judgement;

std::string replaced(std::string text, std::string_view place, std::string_view by) {
  for (size_t at = text.find(place); at != std::string::npos; at = text.find(place)) {
    text.replace(at, place.size(), by);
  }
  return text;
}

// `indent` spaces before every line.
std::string indented(std::string_view text, size_t indent) {
  const std::string margin(indent, ' ');
  return margin + replaced(replaced(std::string(text), "\n", "\1"), "\1", '\n' + margin);
}

// A YAML scalar in double quotes.
std::string quoted(std::string text) {
  return '"' + replaced(replaced(std::move(text), "\"", "\1"), "\1", "\\\"") + '"';
}

void print_row(const Judgement& rule) {
  const std::string when = replaced(replaced(std::string(rule.when), "{percent}",
                                             fmt::format("{:g} %", 100 * rule.limit.value_or(0))),
                                    "{limit}", fmt::format("{:g}", rule.limit.value_or(0)));
  fmt::print("| `{}` | `{}` | {} | {} min | {} |\n", rule.kind, rule.alert,
             kova_host::severity_name(rule.severity), rule.held.count(), when);
}

void print_alert(const Judgement& rule) {
  const std::string_view item = "{{ $labels.family }}/{{ $labels.package }}/{{ $labels.item }}";
  std::string summary = fmt::format("{{{{ $labels.instance }}}}: {} {}",
                                    rule.subject.empty() ? item : rule.subject, rule.says);
  summary += rule.shown.empty() ? "" : ": " + std::string(rule.shown);
  fmt::print("      - alert: {}\n        expr: |-\n{}\n        for: {}m\n", rule.alert,
             indented(replaced(std::string(rule.expression), "{limit}",
                               fmt::format("{:g}", rule.limit.value_or(0))),
                      10),
             rule.held.count());
  fmt::print("        labels: {{severity: {}, rule: {}}}\n",
             kova_host::severity_name(rule.severity), rule.kind);
  fmt::print("        annotations:\n          summary: {}\n          action: {}\n", quoted(summary),
             quoted(replaced(std::string(rule.action), "{id}", "{{ $labels.id }}")));
}

constexpr const char* kIntroduction =
    R"(# Alerts on the metrics of kova-exporter, with the rules and words of kovactl check. Machines are told
# apart by `instance`, items by `item` and `id`. Thresholds come from the ranges and settings that the
# machine itself publishes, so that one rule fits every machine.
# Made by scripts/items.sh from the table of judgements; do not edit.
groups:
)";

void print_alerts() {
  fmt::print("{}", kIntroduction);
  for (const bool outside : {true, false}) {
    fmt::print("  - name: {}\n    rules:\n", outside ? "kova-machine" : "kova-items");
    for (const Judgement& rule : kova_host::judgement_table()) {
      if ((rule.condition == nullptr) == outside) {
        print_alert(rule);
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view what = argc == 2 ? argv[1] : "";
  if (what == "--alerts") {
    print_alerts();
  } else if (what == "--table") {
    for (const Judgement& rule : kova_host::judgement_table()) {
      print_row(rule);
    }
  } else {
    fmt::print(stderr, "usage: judgement_document --table | --alerts\n");
    return 2;
  }
}
