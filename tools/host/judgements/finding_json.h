// Findings for other programs.
#pragma once

#include <vector>

#include "tools/host/judgements/judgement.h"
#include "tools/host/system/json_ptr.h"

namespace kova_host {

// [{"rule", "severity", "id", "path", "message", "action"}]; the message is the sentence without
// the path, and there is an action where the rule has one.
JsonPtr json_findings(const std::vector<Finding>& findings);

}  // namespace kova_host
