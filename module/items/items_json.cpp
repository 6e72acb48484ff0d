// items.json: every item for programs that have no device at hand. Keys without content are left
// out.
#include "module/items/items_json.h"

#include <jansson.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>

#include "framework/json_owner.h"
#include "include/kova_iot.h"
#include "module/families.h"
#include "module/items/item_list.h"

namespace {

using catalogue::Kind;
using catalogue::Role;
using catalogue::Row;
using catalogue::Sheet;
using catalogue::Word;

// Adds a key unless its text is empty.
void add(json_t* object, const char* key, std::string_view text) {
  if (!text.empty()) {
    json_object_set_new(object, key, json_stringn(text.data(), text.size()));
  }
}

void add(json_t* object, const char* key, json_t* value) {
  json_object_set_new(object, key, value);
}

void add_integer(json_t* object, const char* key, unsigned int value) {
  add(object, key, json_integer(value));
}

// Whole numbers without a fraction.
void add_number(json_t* object, const char* key, double value) {
  add(object, key,
      value == std::floor(value) ? json_integer(static_cast<json_int_t>(value)) : json_real(value));
}

template <typename Values>
json_t* integers(const Values& values) {
  json_t* array = json_array();
  for (const auto value : values) {
    json_array_append_new(array, json_integer(value));
  }
  return array;
}

const char* role_of(Role role) {
  switch (role) {
    case Role::kIdentity:
      return "identity";
    case Role::kReading:
      return "reading";
    case Role::kState:
      return "state";
    case Role::kSetting:
      return "setting";
    case Role::kDefault:
      return "default";
    case Role::kNone:
      break;
  }
  throw std::logic_error("an item without a role");
}

const char* kind_of(Kind kind) {
  switch (kind) {
    case Kind::kSwitch:
      return "switch";
    case Kind::kInteger:
      return "integer";
    case Kind::kReal:
      return "real";
    case Kind::kText:
      return "text";
    case Kind::kNone:
      break;
  }
  throw std::logic_error("an item without a kind");
}

const char* word_of(const catalogue::Shape& as) {
  switch (as.word) {
    case Word::kSigned:
      return "signed";
    case Word::kLow16Signed:
      return "low 16 signed";
    case Word::kWhole:
      return as.through_text && as.kind == Kind::kInteger ? "signed" : "";
    case Word::kLowByteInDocument:
      return "";  // whole, in a single read
  }
  throw std::logic_error("an item without a word");
}

const char* written_as(Kind kind) {
  return kind == Kind::kSwitch ? "switch" : kind == Kind::kReal ? "scaled" : "integer";
}

void add_options(json_t* item, const Row& row) {
  if (row.options.empty()) {
    return;
  }
  json_t* options = json_array();
  for (const auto& [value, label] : item_list::options_of(row)) {
    json_array_append_new(options, json_pack("{s:i, s:s}", "value", value, "label", label.c_str()));
  }
  add(item, "options", options);
}

void add_range(json_t* item, const Row& row) {
  if (row.range) {
    add_number(item, "min", row.range->min);
    add_number(item, "max", row.range->max);
  }
}

void add_conversion(json_t* item, const Row& row) {
  if (step_of(row.as) != 1) {
    add_number(item, "scale", step_of(row.as));
  }
  if (row.as.offset != 0) {
    add_number(item, "offset", row.as.offset);
  }
  add(item, "word", word_of(row.as));
  if (row.as.truncated) {
    add(item, "truncated", json_true());
  }
}

void add_writing(json_t* item, const Sheet& sheet, const Row& row) {
  if (row.as.role != Role::kSetting && row.as.role != Role::kDefault) {
    return;
  }
  add_integer(item, "write_code", item_list::write_code_of(sheet, row));
  add(item, "written_as", written_as(row.as.kind));
  if (row.default_of != 0) {
    add_integer(item, "factory_default_of", row.default_of);
  }
  for (const Row& other : sheet.rows) {
    if (other.default_of == row.id) {
      add_integer(item, "factory_default", other.id);
    }
  }
}

json_t* item_of(const Sheet& sheet, const item_list::Package& package, const Row& row) {
  json_t* item = json_object();
  add_integer(item, "id", item_list::id_of(sheet, row));
  add(item, "name", item_list::name_of(sheet, row));
  add(item, "unit", item_list::unit_of(package, row));
  add_options(item, row);
  if (!row.offered.empty()) {
    add(item, "offered", integers(item_list::offered_of(row)));
  }
  add_range(item, row);
  add(item, "kind", kind_of(row.as.kind));
  add(item, "role", role_of(row.as.role));
  if (row.is_private) {
    add(item, "private", json_true());
  }
  add(item, "access", access(row.as));
  add(item, "ui", ui_hint(row));
  add(item, "codes", integers(item_list::codes_of(row)));
  add_writing(item, sheet, row);
  add_conversion(item, row);
  add(item, "note", item_list::note_of(row));
  return item;
}

json_t* packages_of(const Sheet& sheet) {
  json_t* packages = json_array();
  for (const item_list::Package& package : item_list::packages_of(sheet)) {
    json_t* items = json_array();
    for (const Row* row : package.items) {
      json_array_append_new(items, item_of(sheet, package, *row));
    }
    json_t* made = json_object();
    add(made, "name", package.name);
    add_integer(made, "id", package.id);
    add(made, "items", items);
    json_array_append_new(packages, made);
  }
  return packages;
}

json_t* instances_of(const catalogue::Instances& instances) {
  json_t* counted_by = json_array();
  for (const catalogue::Count& count : instances.counted_by) {
    json_t* step = json_object();
    add_integer(step, "code", count.code);
    if (count.count != 0) {
      add_integer(step, "equals", 1);
      add_integer(step, "count", count.count);
    }
    json_array_append_new(counted_by, step);
  }
  json_t* made = json_object();
  add(made, "word", instances.word);
  add_integer(made, "max", instances.max);
  add_integer(made, "code_step", instances.code_step);
  add_integer(made, "id_step", 1);
  add(made, "counted_by", counted_by);
  return made;
}

json_t* second_packages_of(const Sheet& sheet) {
  json_t* also = json_array();
  for (const catalogue::Package& package : sheet.packages) {
    if (package.second_id != 0) {
      json_t* made = json_object();
      add(made, "family", sheet.second_family);
      add(made, "package", package.second_name);
      add_integer(made, "package_id", package.second_id);
      add_integer(made, "of", package.id);
      json_array_append_new(also, made);
    }
  }
  return also;
}

json_t* family_object(const Sheet& sheet) {
  json_t* family = json_object();
  add(family, "name", sheet.name);
  add(family, "title", sheet.title);
  add_integer(family, "id", sheet.id);
  json_t* presence = json_object();
  add_integer(presence, "code", sheet.presence_code);
  add(presence, "present", sheet.present_when_readable ? "readable" : "nonzero");
  add(family, "presence", presence);
  if (sheet.status_when_read != IOT_STATUS_SUCCESS) {
    add_integer(family, "status_when_read", sheet.status_when_read);
  }
  if (sheet.status_without_value) {
    add_integer(family, "status_without_value", *sheet.status_without_value);
  }
  if (sheet.instances) {
    add(family, "instances", instances_of(*sheet.instances));
  }
  if (!sheet.second_family.empty()) {
    add(family, "also", second_packages_of(sheet));
  }
  std::string note(sheet.note);
  std::ranges::replace(note, '\n', ' ');
  add(family, "note", note);
  add(family, "packages", packages_of(sheet));
  return family;
}

}  // namespace

std::string items_json() {
  const JsonOwner document(
      json_pack("{s:i, s:s, s:[]}", "format", 1, "release", KOVA_IOT_VERSION, "families"));
  for (const Sheet* sheet : families::sheets()) {
    json_array_append_new(json_object_get(document.get(), "families"), family_object(*sheet));
  }
  const std::unique_ptr<char, decltype(&std::free)> text(
      json_dumps(document.get(), JSON_INDENT(1) | JSON_REAL_PRECISION(15)), &std::free);
  if (text == nullptr) {
    throw std::bad_alloc();
  }
  return std::string(text.get()) + "\n";
}
