#pragma once

#include <string>

#include "host/view/Report.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// The status tree for people: one line a node, indented, with status, reading and remark in columns, then
/// the system's status, the error LED and what is simulated. Status is told in words, with colours on top of
/// them. [any thread]
std::string TreeText(const Report& report, const StatusWords& words, bool colours);

}  // namespace emstatus::host
