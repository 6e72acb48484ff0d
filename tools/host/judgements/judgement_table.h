// The rules by which every tool decides what needs attention, one row a rule.
#pragma once

#include <span>

#include "tools/host/judgements/judgement.h"

namespace kova_host {

// In the order of docs/fleet.md: first what only an observer from outside can tell.
std::span<const Judgement> judgement_table();

// Null for a kind that there is not.
const Judgement* find_judgement(std::string_view kind);

}  // namespace kova_host
