#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "host/simulation/SimulationTracker.h"
#include "host/view/StatusNode.h"

namespace emstatus::host {

/// The ID that the module has given an instance, by the names of subsystem and component in the
/// configuration; empty when it knows none.
using InstanceIdOf = std::function<std::string(const std::string& subsystem, const std::string& component,
                                               std::uint32_t index, std::uint32_t cabinet)>;

/// Marks the nodes whose status the module was told to force, and notes the parts that have no node.
void MarkSimulated(StatusNode& root, SimulationState& simulation, const InstanceIdOf& instanceId);

}  // namespace emstatus::host
