#pragma once

#include <string>

#include "host/view/NodeFinder.h"

namespace emstatus::host {

/// The numbers of all leaves at and below a node as a check plugin prints them behind "|":
/// 'label'=value[unit];warn;crit;min;max, separated by blanks. A number that is not known now is U. Labels
/// are unique and stay the same as long as the tree does. Units are those that check plugins have: s, B and
/// %; all other values are in the unit that the tree shows, without it. [any thread]
std::string PerformanceData(const NodePath& node);

}  // namespace emstatus::host
