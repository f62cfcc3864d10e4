#pragma once

#include <cstdint>

#include "config/StatusValue.h"
#include "tree/StatusTreeNode.h"

namespace emstatus {

/// Merges `nodeValue` into `parentSlot` by MergeStatus and traces what came of it (level 5).
void MakeParentStatus(StatusValue& parentSlot, StatusValue nodeValue);

/// Merges the child's status, CSS status and non-CSS status into the parent's, each for itself.
void UpdateParentStatus(StatusTreeNode& parentNode, const StatusTreeNode& childNode);

/// Splits the node's status into its CSS and its non-CSS part: the part it does not belong to becomes OK. The
/// customer can service the node when `cssIndicator` is above 0.
void MakeGelCssStatus(StatusTreeNode& node, std::int32_t cssIndicator);

/// What the global error LED shows for the system node, bit 0x80 set when the worst that is wrong can be
/// serviced by the customer. Traces its steps (level 3).
std::uint8_t GelValue(const StatusTreeNode& root);

}  // namespace emstatus
