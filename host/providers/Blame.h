#pragma once

#include <string>

#include "host/providers/Reading.h"

namespace emstatus::host {

/// Makes `reading` as bad as `condition`, for a reason and with what to do about it; changes nothing when
/// something at least as bad is told already. [any thread]
void Blame(Reading& reading, Condition condition, std::string reason, std::string advice = "");

}  // namespace emstatus::host
