// What to say of a device that does not answer.
#pragma once

#include <functional>
#include <string>

#include "tools/host/session/pending_call.h"
#include "tools/host/session/session.h"
#include "tools/host/system/errors.h"

namespace kovactl {

// What a call is about: "0x14140402 PoE 2 current", "the module".
std::string subject_of(const kova_host::PendingCall::State& call);

// The error that ends the program after so many seconds, with the item in its text. A module that
// does not start says nothing of items, so a second process reads them one by one until it is
// stuck as well; `wait_on` is asked time and again whether to wait for that.
kova_host::HostError unanswered(const kova_host::PendingCall::State& call, double limit_seconds,
                                const kova_host::HostOptions& options,
                                const std::function<bool()>& wait_on);

// The same for a command that was to be done within so many seconds. What it waits for may be slow
// and not stuck: the text tells how long it has waited.
kova_host::HostError unfinished(const kova_host::PendingCall::State& call, double limit_seconds,
                                const kova_host::HostOptions& options,
                                const std::function<bool()>& wait_on);

}  // namespace kovactl
