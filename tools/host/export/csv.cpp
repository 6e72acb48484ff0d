// What `kovactl list --json` prints as comma-separated values (RFC 4180).
#include "tools/host/export/csv.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <utility>

#include "tools/host/system/errors.h"
#include "tools/host/system/nearest.h"
#include "tools/host/system/plain_text.h"

namespace kova_host {
namespace {

constexpr const char* kLineEnd = "\r\n";

// The rules of the document's findings by the ID of their item, the worst first.
using RulesById = std::map<std::string, std::string>;

RulesById rules_of(const json_t* document) {
  RulesById rules;
  const json_t* findings = json_object_get(document, "findings");
  for (size_t i = 0; i < json_array_size(findings); ++i) {
    const json_t* finding = json_array_get(findings, i);
    std::string& all = rules[text_at(finding, "id")];
    all += (all.empty() ? "" : " ") + text_at(finding, "rule");
  }
  return rules;
}

struct Cell {
  enum class Kind { number, text, none };
  Kind kind = Kind::none;
  double number = 0;
  std::string text;

  bool before(const Cell& other) const {
    return kind != other.kind     ? kind < other.kind
           : kind == Kind::number ? number < other.number
                                  : text < other.text;
  }
};

Cell text_cell(std::string_view text) {
  std::string shown = field_text(text);
  return {shown.empty() ? Cell::Kind::none : Cell::Kind::text, 0, std::move(shown)};
}

Cell cell_of(const json_t* item, const std::string& field, const RulesById& rules) {
  if (field == "findings") {
    const auto found = rules.find(text_at(item, "id"));
    return found == rules.end() ? Cell() : text_cell(found->second);
  }
  const json_t* value = json_object_get(item, field.c_str());
  if (json_is_integer(value)) {
    return {Cell::Kind::number, json_number_value(value),
            fmt::format("{}", json_integer_value(value))};
  }
  if (json_is_real(value)) {
    return {Cell::Kind::number, json_real_value(value),
            fmt::format("{:.15g}", json_real_value(value))};
  }
  if (json_is_boolean(value)) {
    return text_cell(json_is_true(value) ? "true" : "false");
  }
  return json_is_string(value) ? text_cell({json_string_value(value), json_string_length(value)})
                               : Cell();
}

std::string quoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) {
    return text;
  }
  std::string result = "\"";
  for (const char c : text) {
    result += c == '"' ? "\"\"" : std::string(1, c);
  }
  return result + '"';
}

}  // namespace

const std::vector<std::string>& csv_fields() {
  static const std::vector<std::string> fields = {
      "id",   "path",    "value",    "unit",    "label",    "min",    "max",    "in_range",
      "ok",   "failure", "findings", "family",  "package",  "name",   "access", "role",
      "kind", "status",  "code",     "in_part", "redacted", "missing"};
  return fields;
}

void require_csv_field(const std::string& field) {
  const std::vector<std::string>& fields = csv_fields();
  if (std::find(fields.begin(), fields.end(), field) == fields.end()) {
    const std::string near = suggestion(field, fields);
    throw HostError(
        Fault::usage,
        fmt::format("no field '{}'{}", field,
                    near.empty() ? fmt::format("; there are {}", fmt::join(fields, ", ")) : near));
  }
}

std::vector<std::string> parse_csv_fields(const std::string& list) {
  std::vector<std::string> fields;
  size_t begin = 0;
  do {
    const size_t end = std::min(list.find(',', begin), list.size());
    const std::string field = list.substr(begin, end - begin);
    require_csv_field(field);
    if (std::find(fields.begin(), fields.end(), field) != fields.end()) {
      throw HostError(Fault::usage, fmt::format("the field '{}' is named twice", field));
    }
    fields.push_back(field);
    begin = end + 1;
  } while (begin <= list.size());
  return fields;
}

std::string csv_table(const json_t* list_document, const std::vector<std::string>& fields) {
  const RulesById rules = rules_of(list_document);
  const json_t* items = json_object_get(list_document, "items");
  std::string text = fmt::format("{}{}", fmt::join(fields, ","), kLineEnd);
  for (size_t i = 0; i < json_array_size(items); ++i) {
    for (const std::string& field : fields) {
      text += (&field == fields.data() ? "" : ",") +
              quoted(cell_of(json_array_get(items, i), field, rules).text);
    }
    text += kLineEnd;
  }
  return text;
}

void sort_list(json_t* list_document, const std::string& field) {
  require_csv_field(field);
  const RulesById rules = rules_of(list_document);
  const json_t* items = json_object_get(list_document, "items");
  std::vector<std::pair<Cell, json_t*>> order;
  for (size_t i = 0; i < json_array_size(items); ++i) {
    json_t* item = json_array_get(items, i);
    order.emplace_back(cell_of(item, field, rules), item);
  }
  std::stable_sort(order.begin(), order.end(),
                   [](const auto& a, const auto& b) { return a.first.before(b.first); });
  JsonPtr sorted = own(json_array());
  for (const auto& [cell, item] : order) {
    append(sorted, JsonPtr(json_incref(item)));
  }
  if (json_object_set_new(list_document, "items", sorted.release()) != 0) {
    throw std::bad_alloc();
  }
}

}  // namespace kova_host
