#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/commands/BudgetMeasurement.h"

namespace emstatus::host {

/// The table for people, with a verdict on each. [any thread]
std::string MeasurementText(const std::vector<MeasuredTime>& times);

nlohmann::ordered_json MeasurementJson(const std::vector<MeasuredTime>& times);

}  // namespace emstatus::host
