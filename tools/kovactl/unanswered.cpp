// What to say of a device that does not answer.
#include "tools/kovactl/unanswered.h"

#include <fmt/format.h>

#include <chrono>
#include <optional>

#include "tools/host/model/item_data.h"
#include "tools/kovactl/child_process.h"

namespace kovactl {

using namespace kova_host;
namespace {

constexpr uint32_t kFamilyMask = 0xFFFF0000;

std::string name_of_item(uint32_t id) {
  for (const FamilyData& family : item_data()) {
    if (family.id != (id & kFamilyMask)) {
      continue;
    }
    for (const Item& item : family.items(family.instances ? family.instances->max : 1)) {
      if (item.id == id) {
        return ' ' + path_of(item);
      }
    }
  }
  return "";
}

std::string name_of_code(uint32_t code) {
  for (const FamilyData& family : item_data()) {
    if (family.presence_code == code) {
      return fmt::format("the presence of {} (device code 0x{:08X})", family.title, code);
    }
  }
  return fmt::format("device code 0x{:08X}", code);
}

struct Waiting {
  std::string subject;
  std::chrono::steady_clock::time_point since;
};

// The last item that `kovactl read-each-item` names before it is stuck, if it is.
std::optional<Waiting> item_that_hangs(double limit_seconds, const HostOptions& options,
                                       const std::function<bool()>& wait_on) {
  std::vector<std::string> arguments = {"read-each-item"};
  if (options.simulate) {
    arguments.emplace_back("--simulate");
    if (options.machine) {
      arguments.push_back(*options.machine);
    }
  }
  ChildProcess child(arguments);
  std::optional<Waiting> last;
  while (const auto line = child.next_line(limit_seconds, wait_on)) {
    last = {*line, std::chrono::steady_clock::now()};
  }
  return child.at_end() ? std::nullopt : last;
}

}  // namespace

std::string subject_of(const PendingCall::State& call) {
  switch (call.subject) {
    case PendingCall::Subject::item:
      return id_text(call.number) + name_of_item(call.number);
    case PendingCall::Subject::device_code:
      return name_of_code(call.number);
    case PendingCall::Subject::module:
      break;
  }
  return "the module";
}

HostError unanswered(const PendingCall::State& call, double limit_seconds,
                     const HostOptions& options, const std::function<bool()>& wait_on) {
  std::string subject = subject_of(call);
  if (call.subject == PendingCall::Subject::module) {
    const auto item = item_that_hangs(limit_seconds, options, wait_on);
    if (!item) {
      return {Fault::no_device,
              fmt::format("the module did not come back within {} s, although the device answers "
                          "for every item: it needs more time",
                          limit_seconds)};
    }
    subject = item->subject;
  }
  return {Fault::no_device, fmt::format("{} did not answer within {} s", subject, limit_seconds)};
}

HostError unfinished(const PendingCall::State& call, double limit_seconds,
                     const HostOptions& options, const std::function<bool()>& wait_on) {
  Waiting waiting = {subject_of(call), call.since};
  if (call.subject == PendingCall::Subject::module) {
    waiting = item_that_hangs(limit_seconds, options, wait_on).value_or(waiting);
  }
  const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - waiting.since;
  return {Fault::no_device, fmt::format("not done within {} s: {} has not answered for {:.1f} s",
                                        limit_seconds, waiting.subject, waited.count())};
}

}  // namespace kovactl
