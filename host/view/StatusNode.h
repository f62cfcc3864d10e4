#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/machine/Machine.h"

namespace emstatus::host {

/// A node of the module's status tree, and the object that it stands for.
struct StatusNode {
  std::string id;
  std::string designation;
  std::uint32_t status = 0;
  std::uint32_t cssStatus = 0;
  std::uint32_t nonCssStatus = 0;
  bool isCss = false;
  /// The status is forced by a simulation.
  bool simulated = false;
  /// The raw state; only leaves have one.
  std::optional<std::uint32_t> objectStatus;
  std::string associationKey;
  std::vector<StatusNode> children;
  std::optional<ObjectView> object;
};

/// Reads the tree from the module's JSON text (request 0x2339). Members that are missing stay empty; throws a
/// std::runtime_error when the text is no such tree. [any thread]
StatusNode ReadStatusTree(std::string_view text);

/// Finds the object of each node that has one. [any thread]
void AttachObjects(StatusNode& node, const Machine& machine, std::uint32_t ownCabinet);

/// Takes away the subsystems of which this machine has no part at all.
void DropAbsent(StatusNode& root);

/// What to call the node: its designation, or the object's name where the module only knows a number.
std::string NodeName(const StatusNode& node);

/// The instance at a place that an event names; null when the tree does not hold it.
const StatusNode* FindInstance(const StatusNode& root, std::string_view subsystem, std::string_view component,
                               std::uint32_t index, std::uint32_t cabinet);

}  // namespace emstatus::host
