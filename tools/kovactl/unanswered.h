// What to say of a device that does not answer.
#pragma once

#include "tools/host/errors.h"
#include "tools/host/pending_call.h"

namespace kovactl {

using namespace kova_host;

// The error that ends the program, with the item in its text.
HostError unanswered(const PendingCall::State& call, double limit_seconds);

}  // namespace kovactl
