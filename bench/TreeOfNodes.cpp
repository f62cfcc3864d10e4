#include "bench/TreeOfNodes.h"

#include <string>
#include <utility>

namespace emstatus::bench {
namespace {

constexpr int kSubsystems = 10;
constexpr int kComponents = 10;
constexpr int kInstances = kNodes - 1 - kSubsystems - kSubsystems * kComponents;

StatusTreeNode& Add(StatusSnapshot& snapshot, const std::string& id, const std::string& parent) {
  StatusTreeNode& node = snapshot.nodes[id];
  node.id = id;
  node.parentId = parent;
  node.status = 1;
  node.nonCssStatus = 1;
  if (!parent.empty()) {
    snapshot.nodes.at(parent).children.push_back(id);
  }
  return node;
}

StatusSnapshot Made() {
  StatusSnapshot snapshot;
  Add(snapshot, kRootId, "").designation = "Server";
  for (int subsystem = 0; subsystem < kSubsystems; ++subsystem) {
    const std::string subsystemId = "Subsystem" + std::to_string(subsystem);
    Add(snapshot, subsystemId, kRootId).designation = "Subsystem number " + std::to_string(subsystem);
    for (int component = 0; component < kComponents; ++component) {
      const int number = subsystem * kComponents + component;
      const std::string componentId = "Component" + std::to_string(number);
      Add(snapshot, componentId, subsystemId).designation = "Sensors of zone " + std::to_string(number);
    }
  }
  for (int instance = 0; instance < kInstances; ++instance) {
    const std::string component = "Component" + std::to_string(instance % (kSubsystems * kComponents));
    StatusTreeNode& leaf = Add(snapshot, component + "/000-" + std::to_string(instance), component);
    leaf.designation = "Temperature sensor " + std::to_string(instance);
    leaf.associationKey = "TRIQ:0101-0000-0002-0001";
  }
  return snapshot;
}

}  // namespace

const StatusSnapshot& TenThousandNodes() {
  static const StatusSnapshot snapshot = Made();
  return snapshot;
}

}  // namespace emstatus::bench
