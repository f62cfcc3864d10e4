#pragma once

#include <cstdint>
#include <vector>

#include "host/view/NodeFinder.h"
#include "host/view/Report.h"

/// What makes a node's status. [any thread]
namespace emstatus::host {

/// The leaves at and below the node that are not good, or of which it is not known, the worst first. What
/// redundancy covers comes behind what it does not. Paths begin at the root. What is switched off by intent
/// is no cause.
std::vector<NodePath> CausesOf(const NodePath& node);

/// The node has failed, but redundancy keeps that from making its subsystem fail.
bool IsCovered(const NodePath& node);

/// The status as it counts for the whole: what redundancy covers is a warning, and no part is worse than the
/// system.
std::uint32_t StatusThatCounts(const NodePath& node, const Report& report);

}  // namespace emstatus::host
