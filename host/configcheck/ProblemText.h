#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/configcheck/Problem.h"

namespace emstatus::host {

/// "FILE:LINE: warning: KEY in [SECTION]: what; what to do", without a line feed. `path` is what people call
/// the file. [any thread]
std::string TextOf(const Problem& problem, const std::string& path);

nlohmann::ordered_json ProblemsJson(const std::vector<Problem>& problems);

/// "1 error, 2 warnings"; "no problems" without any.
std::string Summary(const std::vector<Problem>& problems);

}  // namespace emstatus::host
