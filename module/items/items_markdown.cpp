// docs/items.md: every item for people, one table a package.
#include "module/items/items_markdown.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "module/families.h"
#include "module/items/item_list.h"

namespace {

using catalogue::Kind;
using catalogue::Row;
using catalogue::Sheet;

constexpr std::string_view kIntroduction = R"(# Items

<!-- Made by scripts/items.sh from the families' rows in devices/; do not edit. -->

Every item that the module can publish, in the order of the capability document. Which of them a
machine has, the document tells. `items.json`, installed in `share/kova-iot/`, has the same for
programs.

- **ID**: what `KovaIoTGetMDValue` and `KovaIoTSetMDValue` take. Bits 31..24 are the module, 23..16
  the family, 15..8 the group.
- **Unit**: as published, in the item's "u" or, where all items of a package share it, in the
  package's "bu". "Celsuis" is spelled so.
- **Options**: the list that "desc" holds, there joined by `|`.
- **Range**: "min" and "max": advice that no write is held to.
- **Access**: "asm": `r` read, `rw` read and write, `w` a factory default (it can be read too).
- **JSON**: the key that holds the value in the document, and the JSON type to hand to a single
  read.
- **Code**: the code under which the device library knows the value, for reads and writes unless a
  second code is given. The word it answers, unsigned and of 32 bits, is *raw* in a note.
- **Note**: an integer without one is raw. In the document it has 32 bits in two's complement, so
  that raw `0xFFFFFFFF` is -1 there and 4294967295 in a single read.
)";

std::string code_text(unsigned int code) {
  return fmt::format("`0x{:06X}`", code);
}

const char* json_text(Kind kind) {
  switch (kind) {
    case Kind::kSwitch:
      return "`bv` integer";
    case Kind::kInteger:
      return "`v` integer";
    case Kind::kReal:
      return "`v` real";
    case Kind::kText:
      return "`sv` string";
    case Kind::kNone:
      break;
  }
  return "";
}

// What a code gains from instance to instance.
std::string step_text(const Sheet& sheet) {
  return !sheet.instances ? "" : sheet.instances->code_step == 1 ? " + n - 1" : " + S";
}

// The codes one by one, and runs of more than two as "`0xA00011` to `0xA00015`".
std::string codes_text(const Sheet& sheet, const Row& row) {
  const std::vector<unsigned int> codes = item_list::codes_of(row);
  std::string text;
  for (std::size_t first = 0, end = 0; first < codes.size(); first = end) {
    end = first + 1;
    while (end < codes.size() && codes[end] == codes[end - 1] + 1) {
      ++end;
    }
    if (end - first <= 2) {
      end = first + 1;
    }
    text += (first == 0 ? "" : ", ") + code_text(codes[first]) + step_text(sheet);
    if (end - first > 1) {
      text += " to " + code_text(codes[end - 1]) + step_text(sheet);
    }
  }
  const unsigned int written = item_list::write_code_of(sheet, row);
  return written == *row.code ? text : text + ", written at " + code_text(written);
}

std::string options_text(const Row& row) {
  std::string text;
  for (const auto& [value, label] : item_list::options_of(row)) {
    text += fmt::format("{}{}={}", text.empty() ? "" : ", ", value, label);
  }
  return text;
}

// A name with the number in italics.
std::string numbered(std::string name) {
  for (const auto& [mark, shown] : {std::pair{"{n}", "*n*"}, {"{i}", "*n-1*"}}) {
    if (const std::size_t at = name.find(mark); at != std::string::npos) {
      name.replace(at, 3, shown);
    }
  }
  return name;
}

std::string line_of(const Sheet& sheet, const item_list::Package& package, const Row& row) {
  const std::string range =
      row.range ? fmt::format("{} to {}", row.range->min, row.range->max) : "";
  return fmt::format("| `0x{:08X}`{} | {} | {} | {} | {} | {} | {} | {} | {} |\n", row.id,
                     sheet.instances ? " + n" : "", numbered(item_list::name_of(sheet, row)),
                     item_list::unit_of(package, row), options_text(row), range, access(row.as),
                     json_text(row.as.kind), codes_text(sheet, row), item_list::note_of(row));
}

std::string counted_text(const Sheet& sheet) {
  if (!sheet.instances) {
    return "";
  }
  const catalogue::Instances& instances = *sheet.instances;
  std::string text = fmt::format("n is the {}'s number, from 1", instances.word);
  if (instances.code_step != 1) {
    text += fmt::format("; S = (n - 1) × `0x{:X}`", instances.code_step);
  }
  text += ". ";
  for (const catalogue::Count& count : instances.counted_by) {
    text +=
        count.count == 0
            ? fmt::format("Code {} is the number of {}s.", code_text(count.code), instances.word)
            : fmt::format("{}{} when code {} is 1",
                          &count == instances.counted_by.data() ? "There are " : ", else ",
                          count.count, code_text(count.code));
  }
  return text + (text.ends_with('.') ? "\n" : ".\n");
}

std::string second_text(const Sheet& sheet) {
  std::string text;
  for (const catalogue::Package& package : sheet.packages) {
    if (package.second_id != 0) {
      text += fmt::format("{}`{}` (`0x{:08X}`)", text.empty() ? "" : " and ", package.second_name,
                          package.second_id);
    }
  }
  return text.empty()
             ? ""
             : fmt::format("Again in the document, under the same IDs: {} of the family `{}`.\n",
                           text, sheet.second_family);
}

std::string family_section(const Sheet& sheet) {
  std::string text = fmt::format("\n## {}: `{}`\n\nPresent when code {} {}.\n", sheet.title,
                                 sheet.name, code_text(sheet.presence_code),
                                 sheet.present_when_readable ? "can be read" : "is not 0");
  text += counted_text(sheet) + second_text(sheet);
  if (!sheet.note.empty()) {
    text += fmt::format("{}\n", sheet.note);
  }
  for (const item_list::Package& package : item_list::packages_of(sheet)) {
    text += sheet.instances
                ? fmt::format("\n### {} (`0x{:08X}` + n)\n\n", numbered(package.name), sheet.id)
                : fmt::format("\n### {} (`0x{:08X}`)\n\n", package.name, package.id);
    text += "| ID | Name | Unit | Options | Range | Access | JSON | Code | Note |\n";
    text += "|---|---|---|---|---|---|---|---|---|\n";
    for (const Row* row : package.items) {
      text += line_of(sheet, package, *row);
    }
  }
  return text;
}

}  // namespace

std::string items_markdown() {
  std::string text(kIntroduction);
  for (const Sheet* sheet : families::sheets()) {
    text += family_section(*sheet);
  }
  return text;
}
