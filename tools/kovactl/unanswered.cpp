// What to say of a device that does not answer.
#include "tools/kovactl/unanswered.h"

#include <fmt/format.h>

#include "tools/host/catalogue.h"

namespace kovactl {

HostError unanswered(const PendingCall::State& call, double limit_seconds) {
  const std::string what = call.id == PendingCall::kNoItem ? "the module" : id_text(call.id);
  return {Fault::no_device, fmt::format("{} did not answer within {} s", what, limit_seconds)};
}

}  // namespace kovactl
