#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "host/view/NodeFinder.h"
#include "host/view/Report.h"
#include "host/view/StatusWords.h"

/// Why a node has the status that it has. `node` is a path into the report's tree. [any thread]
namespace emstatus::host {

/// For people: what the node is, then each cause with all that is known of it, the worst first; for a node
/// without any, what stands below it as the evidence.
std::string ExplanationText(const NodePath& node, const Report& report, const StatusWords& words,
                            bool colours);

/// The same for programs.
nlohmann::ordered_json ExplanationJson(const NodePath& node, const Report& report, const StatusWords& words);

}  // namespace emstatus::host
