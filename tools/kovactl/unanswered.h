// What to say of a device that does not answer.
#pragma once

#include <functional>
#include <string>

#include "tools/host/errors.h"
#include "tools/host/pending_call.h"
#include "tools/host/session.h"

namespace kovactl {

using namespace kova_host;

// What a call is about: "0x14140402 PoE 2 current", "the module".
std::string subject_of(const PendingCall::State& call);

// The error that ends the program after so many seconds, with the item in its text. A module that
// does not start says nothing of items, so a second process reads them one by one until it is
// stuck as well; `wait_on` is asked time and again whether to wait for that.
HostError unanswered(const PendingCall::State& call, double limit_seconds,
                     const HostOptions& options, const std::function<bool()>& wait_on);

}  // namespace kovactl
