// Readings as a SenML pack (RFC 8428).
#pragma once

#include <filesystem>
#include <string>

#include "tools/host/values/reading.h"

namespace kova_host {

// A name for this machine that is the same at every call: "urn:dev:mac:0024befffe804ff1:" (RFC
// 9039) after the first Ethernet card of a folder as Linux has it in sysfs, or else "HOSTNAME:".
std::string machine_base_name(const std::filesystem::path& network_cards = "/sys/class/net");

// True if `name` may stand in front of the records' names: SenML allows letters, digits and
// "-:./_", and a letter or digit first.
bool is_senml_name(std::string_view name);

// An array of records, one a good reading; `items` has each ID once. `time` is Unix time in
// seconds. Values are in the registry's units; a unit it does not have is left out.
JsonPtr senml_pack(const std::vector<Item>& items, const Readings& readings,
                   const std::string& base_name, double time);

}  // namespace kova_host
