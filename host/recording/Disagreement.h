#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/recording/ReplayedModule.h"
#include "host/view/StatusWords.h"

/// In what two outcomes of the same scan differ. [any thread]
namespace emstatus::host {

/// One thing of which two sides tell different things; empty where a side does not know it.
struct Disagreement {
  /// "Server > Cooling > Fans: Status", "Error LED", "Event Cooling/Fans/Fan0".
  std::string what;
  std::string one;
  std::string other;

  friend auto operator<=>(const Disagreement&, const Disagreement&) = default;
};

/// What a scan leaves behind, as one side tells it.
struct ScanOutcome {
  const nlohmann::ordered_json& tree;
  std::uint32_t systemStatus = 0;
  std::uint32_t led = 0;
  const std::vector<ReplayedEvent>& events;
  const StatusWords& words;
};

enum class Extent {
  /// Everything, to the letter.
  All,
  /// The status of each node, events, system and LED.
  Status,
};

std::vector<Disagreement> Disagreements(const ScanOutcome& one, const ScanOutcome& other, Extent extent);

}  // namespace emstatus::host
