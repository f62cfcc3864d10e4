#pragma once

#include <optional>
#include <string>

#include "data/CommandValue.h"
#include "tree/StatusTree.h"

namespace emstatus {

/// The whole tree as one document: {"SystemStatusTree":{},"Version":1, members of the system node}. Nothing
/// when there is no system node yet. Keys whose node is missing become empty objects, and an unfilled node
/// is left in `tree` for each. [any thread]
std::optional<OwnedValue> ExportStatusTree(StatusTree& tree);

}  // namespace emstatus
