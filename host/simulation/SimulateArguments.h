#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "host/simulation/SimulationFile.h"
#include "host/simulation/SimulationNames.h"

/// What "emhost simulate" is told on its command line. Each throws a std::runtime_error that says what was
/// expected. [any thread]
namespace emstatus::host {

/// "NAME=STATUS", "NAME.ObjectStatus=N" and "NAME.IsCss=0|1", in any order.
SimulatedParts ParseSettings(const std::vector<std::string>& settings, const SimulationNames& names);

/// "90s", "10m", "2h"; nothing for "ever".
std::optional<std::chrono::seconds> ParseDuration(const std::string& text);

}  // namespace emstatus::host
