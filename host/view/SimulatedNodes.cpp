#include "host/view/SimulatedNodes.h"

namespace emstatus::host {
namespace {

/// Only leaves: a component that has instances is not itself forced.
void MarkLeaves(StatusNode& node, SimulationState& simulation) {
  if (node.children.empty()) {
    node.simulated = simulation.parts.contains(node.name);
    simulation.absent.erase(node.name);
  }
  for (StatusNode& child : node.children) {
    MarkLeaves(child, simulation);
  }
}

}  // namespace

void MarkSimulated(StatusNode& root, SimulationState& simulation) {
  if (!simulation.InForce()) {
    return;
  }
  for (const auto& [name, part] : simulation.parts) {
    simulation.absent.insert(name);
  }
  for (StatusNode& subsystem : root.children) {
    for (StatusNode& component : subsystem.children) {
      MarkLeaves(component, simulation);
    }
  }
}

}  // namespace emstatus::host
