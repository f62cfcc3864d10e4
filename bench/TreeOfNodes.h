#pragma once

#include "tree/StatusTree.h"

namespace emstatus::bench {

inline constexpr int kNodes = 10000;

/// kNodes nodes as a large server would have them: a system, 10 subsystems of 10 components, instances.
const StatusSnapshot& TenThousandNodes();

}  // namespace emstatus::bench
