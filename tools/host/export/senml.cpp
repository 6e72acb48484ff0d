// Readings as a SenML pack (RFC 8428).
#include "tools/host/export/senml.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "tools/host/system/plain_text.h"
#include "tools/host/values/number_of.h"
#include "tools/host/values/units.h"

namespace kova_host {
namespace {

namespace fs = std::filesystem;

bool is_letter_or_digit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool is_name_character(char c) {
  return is_letter_or_digit(c) || std::string_view("-:./_").find(c) != std::string_view::npos;
}

std::string name_part(std::string_view text) {
  std::string part(text);
  std::replace_if(
      part.begin(), part.end(), [](char c) { return !is_name_character(c); }, '_');
  return part;
}

// First line of a file; "" if there is none.
std::string first_line(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

// "00:24:be:80:4f:f1" as the EUI-64 that RFC 9039 asks for; "" for anything else.
std::string eui64(std::string_view address) {
  std::string digits;
  for (const char c : address) {
    if (is_letter_or_digit(c)) {
      digits += c;
    }
  }
  if (digits.size() != 12 || digits.find_first_not_of('0') == std::string::npos) {
    return "";
  }
  return digits.substr(0, 6) + "fffe" + digits.substr(6);
}

void put_number(const JsonPtr& record, const Item& item, const Reading& reading, double value) {
  const Unit* unit = find_unit(item.unit);
  if (unit != nullptr && !unit->quantity->senml.empty()) {
    put(record, "u", json_text(unit->quantity->senml));
    value = in_base_unit(item.unit, value);
  }
  // Words of the device have 32 bits: whole numbers stay exact through the conversion.
  const bool whole = !std::holds_alternative<double>(reading.value) && value == std::trunc(value);
  put(record, "v",
      whole ? own(json_integer(static_cast<json_int_t>(value))) : own(json_real(value)));
}

JsonPtr record_of(const std::string& name, const Item& item, const Reading& reading) {
  JsonPtr record = own(json_object());
  put(record, "n", json_text(name));
  const auto* integer = std::get_if<int64_t>(&reading.value);
  if (item.kind == ValueKind::boolean && integer != nullptr) {
    put(record, "vb", own(json_boolean(*integer != 0)));
  } else if (const auto number = published_value(item, reading)) {
    put_number(record, item, reading, *number);
  } else {
    put(record, "vs", json_text(field_text(std::get<std::string>(reading.value))));
  }
  return record;
}

// "PIC/Settings/Ignition_delay_on_timer", for every item; with the ID behind it where two items
// would be called the same. Whether an item can be read does not change another one's name.
std::map<uint32_t, std::string> record_names(const std::vector<Item>& items) {
  std::map<uint32_t, std::string> names;
  std::map<std::string, int> uses;
  for (const Item& item : items) {
    const std::string name = fmt::format("{}/{}/{}", item.family, item.package, item.name);
    names[item.id] = name_part(name);
    ++uses[names[item.id]];
  }
  for (auto& [id, name] : names) {
    if (uses[name] > 1) {
      name += fmt::format("/{:08X}", id);
    }
  }
  return names;
}

}  // namespace

std::string machine_base_name(const fs::path& network_cards) {
  constexpr const char* kEthernet = "1";  // ARPHRD_ETHER
  std::error_code error;
  std::set<fs::path> cards;  // sorted, for the same answer each time
  for (const auto& entry : fs::directory_iterator(network_cards, error)) {
    cards.insert(entry.path());
  }
  for (const fs::path& card : cards) {
    const std::string address = eui64(first_line(card / "address"));
    if (!address.empty() && first_line(card / "type") == kEthernet) {
      return "urn:dev:mac:" + address + ":";
    }
  }
  std::array<char, 256> host{};
  if (gethostname(host.data(), host.size() - 1) != 0 || !is_letter_or_digit(host[0])) {
    return "localhost:";
  }
  return name_part(host.data()) + ":";
}

bool is_senml_name(std::string_view name) {
  return !name.empty() && is_letter_or_digit(name.front()) &&
         std::all_of(name.begin(), name.end(), is_name_character);
}

JsonPtr senml_pack(const std::vector<Item>& items, const Readings& readings,
                   const std::string& base_name, double time) {
  JsonPtr pack = own(json_array());
  const auto names = record_names(items);
  for (const Item& item : items) {
    const Reading& reading = readings.at(item.id);
    if (reading.state != Reading::State::good) {
      continue;
    }
    JsonPtr record = own(json_object());
    if (json_array_size(pack.get()) == 0) {
      put(record, "bn", json_text(base_name));
      put(record, "bt", own(json_real(time)));
    }
    json_object_update(record.get(), record_of(names.at(item.id), item, reading).get());
    append(pack, std::move(record));
  }
  return pack;
}

}  // namespace kova_host
