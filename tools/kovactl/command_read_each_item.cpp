// `kovactl read-each-item`, for kovactl itself: names each item and then reads it, past the module,
// so that whoever listens knows which one the device library is stuck in.
#include <dlfcn.h>
#include <fmt/format.h>

#include "tools/host/session/direct_device.h"
#include "tools/host/session/inventory.h"
#include "tools/kovactl/command_line.h"
#include "tools/kovactl/output.h"

namespace kovactl {

using namespace kova_host;
namespace {

void load_device_library() {
  for (const char* file : kDeviceLibraryFiles) {
    print(fmt::format("the loading of {}\n", file));
    if (dlopen(file, RTLD_LAZY) != nullptr) {
      return;
    }
  }
}

DeviceAnswer read(const DirectDevice& device, uint32_t code, const std::string& name) {
  print(name + '\n');
  return device.read(code);
}

void read_family(const DirectDevice& device, const FamilyData& family) {
  const auto presence = read(device, family.presence_code, "the presence of " + family.title);
  if (presence.status != 0 || (!family.present_if_readable && presence.word == 0)) {
    return;
  }
  uint32_t count = 1;
  if (family.instances) {
    count = count_instances(*family.instances, [&](uint32_t code) -> std::optional<uint32_t> {
      const auto answer = read(device, code, "the number of " + family.title);
      return answer.status == 0 ? std::optional(answer.word) : std::nullopt;
    });
  }
  for (const Item& item : family.items(count)) {
    for (const uint32_t code : item.facts.codes) {
      read(device, code, fmt::format("{} {}", id_text(item.id), path_of(item)));
    }
  }
}

ExitCode run_read_each_item(const GlobalOptions& globals) {
  const Module module(globals.host);  // which brings the simulated device library along
  load_device_library();
  const auto device = DirectDevice::in_process();
  if (!device) {
    return ExitCode::no_device;
  }
  for (const FamilyData& family : item_data()) {
    read_family(*device, family);
  }
  return ExitCode::success;
}

}  // namespace

void add_read_each_item(CommandLine& line) {
  line.add({"read-each-item", "Name and read one item after the other", "kovactl read-each-item"},
           run_read_each_item)
      .group("");  // not among the commands in the help
}

}  // namespace kovactl
