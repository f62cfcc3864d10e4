#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/view/StatusNode.h"

namespace emstatus::host {

/// A node behind all those above it, the root first.
using NodePath = std::vector<const StatusNode*>;

/// Names from the root's children on: "Storage/Disks/Disk 5". Of the root its own name.
std::string PathText(std::span<const StatusNode* const> path);

/// The node that a person names: by its id, by what the tree shows, by its name or section in the
/// configuration, by the name of its instance, or by a path of these ("Fans/Fan 2"), of which the beginning
/// may be missing. Upper and lower case count only where it would be ambiguous without. Where several nodes
/// that have the name stand above each other, it is the topmost. Throws a std::runtime_error that lists the
/// nodes when there are several, and the nearest names when there is none. [any thread]
NodePath FindNode(const StatusNode& root, const std::string& wanted);

/// The same among the subsystems.
NodePath FindSubsystem(const StatusNode& root, const std::string& wanted);

}  // namespace emstatus::host
