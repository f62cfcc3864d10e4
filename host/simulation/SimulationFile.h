#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// What stands in EM_STATUS_simu.ini, the file by which the module forces statuses for tests. [any thread]
namespace emstatus::host {

/// What is forced on one component or instance.
struct SimulatedPart {
  static constexpr std::int32_t kNotSimulated = -1;

  /// Counts while no object status is simulated.
  std::uint8_t mappedStatus = 0;
  /// A raw state, which the component's own map turns into a status.
  std::int32_t objectStatus = kNotSimulated;
  std::int32_t isCss = kNotSimulated;

  friend bool operator==(const SimulatedPart&, const SimulatedPart&) = default;
};

/// By the name of the component, or the ID of the instance.
using SimulatedParts = std::map<std::string, SimulatedPart, std::less<>>;

using WallTime = std::chrono::sys_seconds;

struct SimulationFile {
  /// It names itself as it must and is switched on.
  bool active = false;
  /// By a person: the section of emhost is missing, so the simulation has no end.
  bool byHand = true;
  /// Nothing: for ever.
  std::optional<WallTime> until;
  /// Of an active file.
  SimulatedParts parts;

  /// Whether it is emhost's to end it.
  bool IsOver(WallTime now) const { return until && *until <= now; }
};

/// Reads a text as the module does: what the file does not say of a part stays as it was in `earlier`, and no
/// part is ever taken away. Entries that the module passes over are passed over.
SimulationFile ReadSimulation(std::string_view text, SimulatedParts earlier = {});

/// The text of an active file of emhost's own. Every part is written out whole, since a module that runs
/// keeps what it once read.
std::string WriteSimulation(const SimulatedParts& parts, std::optional<WallTime> until);

}  // namespace emstatus::host
