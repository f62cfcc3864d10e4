#pragma once

#include <nlohmann/json.hpp>

#include "host/view/Report.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// The report for programs: the members of the module's tree, with the word of each status and, at nodes that
/// stand for an object, its reading. docs/HOST.md describes it. [any thread]
nlohmann::ordered_json TreeJson(const Report& report, const StatusWords& words);

/// A node's part of it, without its children.
nlohmann::ordered_json NodeMembersJson(const StatusNode& node, const StatusWords& words);

/// An object's part of it.
nlohmann::ordered_json ObjectJson(const ObjectView& object);

}  // namespace emstatus::host
