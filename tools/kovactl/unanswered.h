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

// The same for a command that was to be done within so many seconds. What it waits for may be slow
// and not stuck: the text tells how long it has waited.
HostError unfinished(const PendingCall::State& call, double limit_seconds,
                     const HostOptions& options, const std::function<bool()>& wait_on);

}  // namespace kovactl
