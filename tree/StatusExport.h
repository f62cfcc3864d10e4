#pragma once

#include <optional>
#include <string>

#include "data/CommandValue.h"
#include "tree/StatusTree.h"

namespace emstatus {

/// The whole of `snapshot` as one document: {"SystemStatusTree":{},"Version":1, members of the system node},
/// which refers to the snapshot's texts. Nothing when there is no system node yet. A child whose node is
/// missing becomes an empty object, and an unfilled node is left in `tree` for it. [any thread]
std::optional<OwnedValue> ExportStatusTree(StatusTree& tree, const StatusSnapshot& snapshot);

}  // namespace emstatus
