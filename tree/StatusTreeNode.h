#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/StatusValue.h"

namespace emstatus {

/// Id of the system node.
inline constexpr const char* kRootId = "root";

/// The system, a subsystem, a component or an instance. A node with an empty id was never filled: whoever
/// reads it takes it for missing.
struct StatusTreeNode {
  std::string designation;
  /// Ties the node to an object of the host's command interface; empty when there is none.
  std::string associationKey;
  StatusValue status = NoStatus;
  /// The part of the status that counts for what the customer can service himself (CSS).
  StatusValue cssStatus = NoStatus;
  /// The part that counts for everything else.
  StatusValue nonCssStatus = NoStatus;
  /// Raw status of a leaf as the host gave it, before mapping.
  std::uint32_t objectStatus = 0;
  bool isCSS = false;
  /// Equal to the node's key in the tree.
  std::string id;
  /// Empty for the system node.
  std::string parentId;
  /// Ids, in the order in which the scan added them.
  std::vector<std::string> children;

  void ClearStates() { status = cssStatus = nonCssStatus = NoStatus; }
};

}  // namespace emstatus
