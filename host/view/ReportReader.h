#pragma once

#include <nlohmann/json.hpp>

#include "host/view/Report.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// A report from the JSON that TreeJson makes of it, so that TreeJson makes the same of it again. Members
/// that are not known are passed over. Throws a std::runtime_error that names the place and what was expected
/// there when this is no report, or one of another version. [any thread]
Report ReadReport(const nlohmann::json& json);

/// The words that such a report has for the statuses in it; plain ones for all others.
StatusWords ReadStatusWords(const nlohmann::json& json);

/// The same for an object alone, as ObjectJson makes it.
ObjectView ReadObjectJson(const nlohmann::json& json);

}  // namespace emstatus::host
