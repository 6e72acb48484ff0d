// From rows to lists of items, and the checks that no item is forgotten.
#include "module/items/item_list.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace item_list {
namespace {

using catalogue::Kind;
using catalogue::Role;
using catalogue::Row;
using catalogue::Sheet;
using catalogue::Word;

[[noreturn]] void fail(const Row& row, std::string_view reason) {
  throw std::runtime_error(fmt::format("item 0x{:08X} \"{}\": {}", row.id, row.name, reason));
}

std::vector<std::string_view> split(std::string_view list) {
  std::vector<std::string_view> parts;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find('|'), list.size());
    parts.push_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return parts;
}

int number_of(std::string_view text) {
  int number = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) {
    throw std::runtime_error(fmt::format("\"{}\" is no number", text));
  }
  return number;
}

Package package_of(const Sheet& sheet, const catalogue::Package& package) {
  const auto heading = std::ranges::find(sheet.rows, package.id, &Row::id);
  const auto unit = std::ranges::find(sheet.rows, package.unit_id, &Row::id);
  Package made{.name = std::string(heading == sheet.rows.end() ? sheet.name : heading->name),
               .id = package.id,
               .unit = unit == sheet.rows.end() ? std::string_view() : unit->unit,
               .items = {}};
  for (const Row& row : sheet.rows) {
    if (is_led_by(row, package.id)) {
      made.items.push_back(&row);
    }
  }
  return made;
}

std::string instance_name(const Sheet& sheet) {
  return std::string(sheet.name) + std::string(sheet.instances->package_suffix);
}

Package instance_of(const Sheet& sheet) {
  Package made{.name = instance_name(sheet),
               .id = sheet.id + 1,  // the first one's
               .unit = {},
               .items = {}};
  for (const Row& row : sheet.rows) {
    if (is_published(row)) {
      made.items.push_back(&row);
    }
  }
  if (!sheet.instances->in_row_order) {
    std::ranges::sort(made.items, {}, [](const Row* row) { return row->id; });
  }
  return made;
}

void check(const Sheet& sheet, const std::vector<Package>& packages) {
  for (const Row& row : sheet.rows) {
    const bool hidden_view = row.name.empty() && row.as.role == Role::kNone;
    if (!row.code || row.code == sheet.presence_code || hidden_view) {
      continue;
    }
    if (!is_published(row)) {
      fail(row, "has a code, but no role (column `as`): nothing would show it");
    }
    if (row.as.kind == Kind::kNone) {
      fail(row, "has no kind (column `as`)");
    }
    const auto count = std::ranges::count_if(packages, [&](const Package& package) {
      return std::ranges::count(package.items, &row) != 0;
    });
    if (count != 1) {
      fail(row, fmt::format("stands in {} packages of its family's sheet, not in one", count));
    }
  }
}

// The part of the word that counts; "" for all of it. A text's integer has 32 bits.
std::string part_text(const catalogue::Shape& as) {
  switch (as.word) {
    case Word::kSigned:
      return "raw, signed";
    case Word::kLow16Signed:
      return "low 16 bits of raw, signed";
    case Word::kLowByteInDocument:
      return "low byte of raw in the document, all of raw in a single read";
    case Word::kWhole:
      break;
  }
  return as.through_text && as.kind == Kind::kInteger ? "raw, signed" : "";
}

std::string scaling_text(const catalogue::Shape& as) {
  std::string text = step_of(as) != 1 ? fmt::format(" × {}", step_of(as)) : "";
  if (as.offset != 0) {
    text += fmt::format(" {} {}", as.offset < 0 ? "-" : "+", std::abs(as.offset));
  }
  return text + (as.truncated ? ", cut to a whole number toward zero" : "");
}

std::string switch_text(const catalogue::Shape& as) {
  const bool is_byte = as.word == Word::kLowByteInDocument;
  const std::string text =
      fmt::format("1 unless {} is 0", is_byte                         ? "the low byte of raw"
                                      : as.word == Word::kLow16Signed ? "the low half of raw"
                                                                      : "raw");
  if (as.normalised) {
    return text + (is_byte ? ", in a single read all of raw" : "");
  }
  return fmt::format("{}; {} in a single read", text,
                     is_byte || part_text(as).empty() ? "raw" : part_text(as));
}

std::string conversion_of(const Row& row) {
  const catalogue::Shape& as = row.as;
  if (as.kind == Kind::kSwitch) {
    return switch_text(as);
  }
  const std::string part = part_text(as);
  const std::string scaling = scaling_text(as);
  return scaling.empty() ? part
                         : (part.empty() ? "raw" : part + ",") + scaling +
                               (as.through_text && as.kind == Kind::kReal ? ", to six digits" : "");
}

std::string writing_of(const Row& row) {
  if (row.as.role != Role::kSetting) {
    return "";
  }
  if (row.as.kind == Kind::kReal) {
    return fmt::format("write a real or an integer: value × {}, truncated", steps_per_unit(row.as));
  }
  return row.as.kind == Kind::kSwitch ? "write an integer: more than 0 is 1, else 0"
                                      : "write an integer";
}

std::string offer_of(const Row& row) {
  return row.offered.empty() ? "" : fmt::format("offered: {}", fmt::join(split(row.offered), ", "));
}

}  // namespace

std::vector<Package> packages_of(const Sheet& sheet) {
  std::vector<Package> packages;
  if (sheet.instances) {
    packages.push_back(instance_of(sheet));
  }
  for (const catalogue::Package& package : sheet.packages) {
    packages.push_back(package_of(sheet, package));
  }
  check(sheet, packages);
  return packages;
}

const Row& row_of(const Sheet& sheet, unsigned int id) {
  const auto row = std::ranges::find(sheet.rows, id, &Row::id);
  if (row == sheet.rows.end()) {
    throw std::runtime_error(fmt::format("{}: there is no row 0x{:08X}", sheet.name, id));
  }
  return *row;
}

unsigned int id_of(const Sheet& sheet, const Row& row) {
  return row.id + (sheet.instances ? 1 : 0);
}

std::string name_of(const Sheet& sheet, const Row& row) {
  const bool is_numbered = sheet.instances && sheet.instances->in_item_names;
  return (is_numbered ? instance_name(sheet) + " " : "") + std::string(row.name);
}

std::string_view unit_of(const Package& package, const Row& row) {
  return row.unit.empty() ? package.unit : row.unit;
}

std::vector<unsigned int> codes_of(const Row& row) {
  std::vector<unsigned int> codes;
  if (row.asks_first) {
    codes.push_back(*row.asks_first);
  }
  for (unsigned int word = 0; word < row.words; ++word) {
    codes.push_back(*row.code + word);
  }
  return codes;
}

unsigned int write_code_of(const Sheet& sheet, const Row& row) {
  return *(row.written_at != 0 ? row_of(sheet, row.written_at) : row).code;
}

std::string note_of(const Row& row) {
  std::string note;
  for (const std::string& part :
       {conversion_of(row), std::string(row.note), writing_of(row), offer_of(row)}) {
    note += (note.empty() || part.empty() ? "" : "; ") + part;
  }
  return note;
}

std::vector<std::pair<int, std::string>> options_of(const Row& row) {
  std::vector<std::pair<int, std::string>> options;
  for (std::string_view option : split(row.options)) {
    option.remove_prefix(option.starts_with('\n') ? 1 : 0);
    const std::size_t equals = option.find('=');
    if (equals == std::string_view::npos) {
      fail(row, "an option without a value");
    }
    options.emplace_back(number_of(option.substr(0, equals)), option.substr(equals + 1));
  }
  return options;
}

std::vector<int> offered_of(const Row& row) {
  std::vector<int> values;
  std::ranges::transform(split(row.offered), std::back_inserter(values), number_of);
  return values;
}

}  // namespace item_list
