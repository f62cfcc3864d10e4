#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "host/simulation/SimulationTracker.h"
#include "host/view/StatusNode.h"

namespace emstatus::host {

/// The state of the whole machine after a scan.
struct Report {
  std::chrono::system_clock::time_point time;
  /// When the first scan ended: how far back anything is known.
  std::optional<WallTime> begun;
  StatusNode root;
  /// The status reported for the system: where redundancy covers a failed part it is better than the root's.
  std::uint32_t systemStatus = 0;
  /// The value of the error LED.
  std::uint32_t led = 0;
  /// Nothing in force, or why a part of all this is not the machine's own.
  SimulationState simulation;
};

}  // namespace emstatus::host
