#pragma once

#include <chrono>
#include <string>

#include <nlohmann/json.hpp>

#include "host/simulation/SimulationTracker.h"
#include "host/view/StatusWords.h"

/// A simulation as it is told to people and programs. [any thread]
namespace emstatus::host {

/// "Fan0 Error, Disk1 object status 2 (CSS)".
std::string PartsText(const SimulationState& simulation, const StatusWords& words);

/// "until 2026-03-01 10:15:02", or why it has no end.
std::string EndText(const SimulationState& simulation);

/// The line that goes with everything that is shown: "Simulated until ...: Fan0 Error".
std::string BannerText(const SimulationState& simulation, const StatusWords& words);

/// Null when nothing is simulated.
nlohmann::ordered_json SimulationJson(const SimulationState& simulation, const StatusWords& words);

/// The event of a simulation that has begun, changed or ended: one line without a line end.
std::string SimulationEventText(std::chrono::system_clock::time_point time, const SimulationState& simulation,
                                const StatusWords& words);

/// The same for programs.
nlohmann::ordered_json SimulationEventJson(std::chrono::system_clock::time_point time,
                                           const SimulationState& simulation, const StatusWords& words);

}  // namespace emstatus::host
