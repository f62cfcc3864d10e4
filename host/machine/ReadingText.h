#pragma once

#include <string>

#include "host/providers/Reading.h"

/// Readings in the words that people read. [any thread]
namespace emstatus::host {

/// A number with its unit, as short as is exact enough: "41.5 °C", "4200 RPM", "1.5 GiB".
std::string NumberText(double value, Unit unit);

/// Which limit the value breaks, with both numbers ("0 RPM, at least 600 RPM expected"); empty for none.
std::string LimitBreach(const Measurement& measurement);

/// How good a value within or beyond its limits is. Critical limits come first.
Condition ConditionByLimits(const Measurement& measurement);

}  // namespace emstatus::host
