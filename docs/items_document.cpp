// Prints docs/items.md. The adapters themselves are asked for every item, over a device library
// that records which codes they read and write; an item that no table shows, or that cannot be
// described, ends the program with an error.
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "devices/addon_board/device_trk7000.h"
#include "devices/gsensor/device_gsensor.h"
#include "devices/pic/device_pic.h"
#include "devices/pic/pic_items.h"
#include "devices/poe/device_poe.h"
#include "devices/poe/poe_items.h"
#include "devices/sbattery/device_sbattery.h"
#include "devices/sbattery/sbattery_items.h"
#include "devices/sdram/device_sdram.h"
#include "devices/sdram/sdram_items.h"
#include "docs/items_notes.h"
#include "framework/item_id.h"
#include "framework/json_owner.h"

namespace {

using Codes = std::vector<unsigned int>;

// What the adapters asked the device library for.
std::set<unsigned int> codes_read;
Codes codes_written;

std::uint32_t record_read(std::uint32_t code, std::uint32_t* value) {
  codes_read.insert(code);
  // Only modules of the series "VLX-" have all fields. Elsewhere any word that is neither 0 nor 1
  // will do: present, not idle, and no state that a switch could already be in.
  const bool part_number = (code & 0xFFFFF0FFU) == 0x00A00011;
  *value = part_number ? 0x564C582D : 2;
  return 0;
}

std::uint32_t record_write(std::uint32_t code, std::uint32_t /*value*/) {
  codes_written.push_back(code);
  return 0;
}

// The codes that `call` reads, each once and in order.
template <typename Call>
Codes codes_read_by(const Call& call) {
  codes_read.clear();
  call();
  return {codes_read.begin(), codes_read.end()};
}

[[noreturn]] void fail(unsigned int id, std::string_view reason) {
  throw std::runtime_error(fmt::format("item 0x{:08X}: {}", id, reason));
}

// One line of a table. An empty text is an empty cell.
struct Line {
  std::string id{};
  std::string name{};
  std::string unit{};
  std::string options{};
  std::string range{};
  std::string access{};
  std::string json{};
  std::string code{};
  std::string note{};
};

std::string joined(std::string_view options) {
  std::string text;
  for (const char c : options) {
    text += c == '|' ? std::string(", ") : c == '\n' ? "" : std::string(1, c);
  }
  return text;
}

std::string text_of(const json_t* element, const char* key) {
  const char* text = json_string_value(json_object_get(element, key));
  return text != nullptr ? text : "";
}

// The key that holds an element's value, and the JSON type that a read of it needs.
std::string json_kind(unsigned int id, const json_t* element) {
  for (const char* key : {"v", "bv", "sv"}) {
    if (const json_t* value = json_object_get(element, key); value != nullptr) {
      const char* type = json_is_string(value) ? "string"
                         : json_is_real(value) ? "real"
                                               : "integer";
      return fmt::format("`{}` {}", key, type);
    }
  }
  fail(id, "no value in its element");
}

// What an element tells of its item; the ID and the codes remain to be filled in.
template <typename Data>
Line line_of(unsigned int id, Status (*create)(unsigned int, void*, json_t**), Data data) {
  json_t* made = nullptr;
  if (create(id, &data, &made) != IOT_STATUS_SUCCESS) {
    fail(id, "no element");
  }
  const JsonOwner element(made);
  Line line{.id = fmt::format("`0x{:08X}`", id),
            .name = text_of(made, "n"),
            .unit = text_of(made, "u"),
            .options = joined(text_of(made, "desc")),
            .access = text_of(made, "asm"),
            .json = json_kind(id, made),
            .note = std::string(items_document::note_of(id))};
  if (const json_t* minimum = json_object_get(made, "min"); minimum != nullptr) {
    line.range = fmt::format("{} to {}", json_real_value(minimum),
                             json_real_value(json_object_get(made, "max")));
  }
  if (const std::string offered = text_of(made, "uiop"); !offered.empty()) {
    line.note += fmt::format("{}offered: {}", line.note.empty() ? "" : "; ", joined(offered));
  }
  return line;
}

// The code that a write of the item goes to.
unsigned int written_code(unsigned int id, Status (*set_value_by_id)(unsigned int, json_t*)) {
  codes_written.clear();
  const JsonOwner one(json_integer(1));
  if (set_value_by_id(id, one.get()) != IOT_STATUS_SUCCESS || codes_written.size() != 1) {
    fail(id, "writable, but a write sends not one word");
  }
  return codes_written.front();
}

void print_line(const Line& line) {
  fmt::print("| {} | {} | {} | {} | {} | {} | {} | {} | {} |\n", line.id, line.name, line.unit,
             line.options, line.range, line.access, line.json, line.code, line.note);
}

void print_table_head(std::string_view title, unsigned int id) {
  fmt::print("\n### {} (`0x{:08X}`)\n\n", title, id);
  fmt::print("| ID | Name | Unit | Options | Range | Access | JSON | Raw code | Note |\n");
  fmt::print("|---|---|---|---|---|---|---|---|---|\n");
}

// The items of a family whose device codes stand in its catalogue, package by package.
template <typename Family>
class MapFamily {
 public:
  // Prints the items first..end-1 under their heading.
  void print_package(unsigned int heading, unsigned int first, unsigned int end) {
    print_table_head(Family::get_name_by_id(heading), heading);
    const auto range_end = Family::kova_id_map.lower_bound(end);
    for (auto item = Family::kova_id_map.lower_bound(first); item != range_end; ++item) {
      print_item(item->first, item->second);
      printed_.insert(item->first);
    }
  }

  // An item with a name and a code that is in no table is an item forgotten here.
  void check_all_printed(unsigned int presence) const {
    for (const auto& [id, code] : Family::kova_id_map) {
      if (id != presence && !Family::get_name_by_id(id).empty() && !printed_.contains(id)) {
        fail(id, "in no table");
      }
    }
  }

 private:
  static void print_item(unsigned int id, unsigned int code) {
    const bool text = item_id::group(id) == item_id::family(id) + 0x600;
    Line line = text ? line_of(id, Family::create_json_element, std::string("text"))
                     : line_of(id, Family::create_json_element, 1U);
    if (line.unit.empty()) {
      line.unit = Family::get_unit_by_id(item_id::group(id));
    }
    line.code = fmt::format("`0x{:06X}`", code);
    if constexpr (requires { Family::set_func; }) {
      if (line.access != "r") {
        const unsigned int target = written_code(id, Family::set_value_by_id);
        line.code += target == code ? "" : fmt::format(", written at `0x{:06X}`", target);
      }
    }
    print_line(line);
  }

  std::set<unsigned int> printed_;
};

void print_family(std::string_view title, std::string_view text) {
  fmt::print("\n## {}\n\n{}\n", title, text);
}

void print_poe() {
  print_family("PoE ports: `PoE`", items_document::kPoE);
  print_table_head("PoE *P*", item_id::kPoE);
  for (const unsigned int kind :
       {poe::kPower, poe::kDetect, poe::kClass, poe::kCurrent, poe::kVoltage}) {
    Line line = line_of(kind + 1, Device_PoE::create_json_element, 1U);
    const unsigned int code = Device_PoE::getKovaID(kind + 1);
    if (Device_PoE::getKovaID(kind + 8) != code + 7) {
      fail(kind, "device codes do not run with the ports");
    }
    line.id = fmt::format("`0x{:08X}` + P", kind);
    line.name.replace(line.name.find('1'), 1, "*P*");
    line.options = joined(Device_PoE::get_desc_by_id(kind + 1));
    line.code = fmt::format("`0x{:06X}` + P - 1", code);
    if (line.access != "r" && written_code(kind + 1, Device_PoE::set_value_by_id) != code) {
      fail(kind, "written elsewhere than read");
    }
    print_line(line);
  }
}

void print_gsensor() {
  print_family("Accelerometer: `GSensor`", items_document::kGSensor);
  MapFamily<Device_GSensor> family;
  family.print_package(0x14150900, 0x14150901, 0x14150A00);
  family.print_package(0x14150700, 0x14150711, 0x14150800);
  family.check_all_printed(0x14150001);
}

void print_pic() {
  print_family("Power and ignition controller: `PIC`", items_document::kPic);
  MapFamily<Device_PIC> family;
  family.print_package(pic::kInformation, pic::kFirmwareVersion, pic::kInformation + 0x100);
  family.print_package(pic::kDefaultView, pic::kDefaultView, pic::kWriteView);
  family.print_package(pic::kCurrentView, pic::kCurrentView, pic::kDefaultView);
  family.print_package(pic::kStatus, pic::kStatus, pic::kStatus + 0x100);
  family.check_all_printed(pic::kPresence);
}

void print_trk7000() {
  print_family("Add-on board: `TRK-7000`", items_document::kTrk7000);
  MapFamily<Device_TRK7000> family;
  family.print_package(0x14170600, 0x14170601, 0x14170700);
  family.print_package(0x14170310, 0x14170311, 0x14170400);
  family.print_package(0x14170100, 0x14170111, 0x14170200);
  family.check_all_printed(0x14170001);
}

// The codes one by one, and runs of more than two as "`0xA00011` to `0xA00015`".
std::string code_list(const Codes& codes, std::string_view step) {
  std::string text;
  for (std::size_t first = 0, end = 0; first < codes.size(); first = end) {
    end = first + 1;
    while (end < codes.size() && codes[end] == codes[end - 1] + 1) {
      ++end;
    }
    if (end - first <= 2) {
      end = first + 1;
    }
    text += fmt::format("{}`0x{:06X}`{}", first == 0 ? "" : ", ", codes[first], step);
    if (end - first > 1) {
      text += fmt::format(" to `0x{:06X}`{}", codes[end - 1], step);
    }
  }
  return text;
}

// The codes that a single read of the item asks for beyond those of the presence probe.
template <typename Family>
Codes codes_of(const Family& family, unsigned int id) {
  const Codes probe = codes_read_by([&] { (void)family.is_available(); });
  const JsonOwner ignored(json_null());
  Codes codes = codes_read_by([&] { family.get_value_by_id(id, ignored.get()); });
  std::erase_if(codes, [&](unsigned int code) { return std::ranges::count(probe, code) != 0; });
  if (codes.empty()) {
    fail(id, "reads no code");
  }
  return codes;
}

void print_sdram() {
  print_family("Memory modules: `SDRAM`", items_document::kSdram);
  print_table_head("SDRAM*M-1*", item_id::kSdram);
  const Device_SDRAM family;
  for (const auto& [field, name] : Device_SDRAM::device_name_map) {
    Line line = line_of(field + 1, Device_SDRAM::create_json_element, std::string("1"));
    const Codes codes = codes_of(family, field + 1);
    Codes next = codes_of(family, field + 2);
    std::ranges::for_each(next, [](unsigned int& code) { code -= 0x100; });
    if (next != codes) {
      fail(field, "device codes do not run with the modules");
    }
    line.id = fmt::format("`0x{:08X}` + M", field);
    line.code = code_list(codes, " + S");
    print_line(line);
  }
}

// As the other families' functions: this adapter takes the ID by reference.
Status create_battery_element(unsigned int id, void* data, json_t** out) {
  return Device_SBATTERY::create_json_element(id, data, out);
}

void print_battery() {
  print_family("Smart battery: `SMART BATTERY`", items_document::kSmartBattery);
  print_table_head("SMART BATTERY", item_id::kSmartBattery);
  const Device_SBATTERY family;
  for (const auto& [id, name] : Device_SBATTERY::device_name_map) {
    Line line = line_of(id, create_battery_element, std::string("1"));
    line.code = code_list(codes_of(family, id), "");
    print_line(line);
  }
}

void print_document() {
  Device_PoE::get_func = Device_PIC::get_func = Device_TRK7000::get_func = record_read;
  Device_GSensor::get_func = Device_SDRAM::get_func = Device_SBATTERY::get_func = record_read;
  Device_PoE::set_func = Device_PIC::set_func = Device_GSensor::set_func = record_write;
  fmt::print("{}", items_document::kIntroduction);
  print_sdram();
  print_battery();
  print_trk7000();
  print_poe();
  print_pic();
  print_gsensor();
  items_document::check_all_used();
}

}  // namespace

int main() {
  try {
    print_document();
    return std::fflush(stdout) == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    fmt::print(stderr, "items_document: {}\n", error.what());
    return 1;
  }
}
