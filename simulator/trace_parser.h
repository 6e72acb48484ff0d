// Traces in a description: those of single codes, and recordings of whole machines.
#pragma once

#include "simulator/json_node.h"
#include "simulator/machine.h"

namespace kova_sim {

/// The trace of one code, in an entry: `[[0, 3000], [1500, {"status": 5}]]`, or an object that
/// says how it ends as well.
SharedTrace read_trace(const Node& node);

/// A recording: moments of many codes, `[[0, "0x820000", 3000, "0x820001", 3010], ...]`. What it
/// holds replaces the values of these codes. An object without moments changes how the traces end
/// that the machine has already.
void read_recording(MachineDescription& machine, const Node& node);

}  // namespace kova_sim
