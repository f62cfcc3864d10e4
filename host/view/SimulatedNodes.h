#pragma once

#include "host/simulation/SimulationTracker.h"
#include "host/view/StatusNode.h"

namespace emstatus::host {

/// Marks the nodes whose status the module was told to force, and notes the parts that have no node; after
/// NameNodes.
void MarkSimulated(StatusNode& root, SimulationState& simulation);

}  // namespace emstatus::host
