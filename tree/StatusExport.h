#pragma once

#include <optional>

#include "data/OwnedValue.h"
#include "tree/StatusTree.h"

namespace emstatus {

/// The JSON text of the whole of `snapshot`: {"SystemStatusTree":{},"Version":1, members of the system node}.
/// Nothing when there is no system node yet. A child whose node is missing becomes an empty object, and an
/// unfilled node is left in `tree` for it. [any thread]
std::optional<OwnedValue> ExportStatusTree(StatusTree& tree, const StatusSnapshot& snapshot);

}  // namespace emstatus
