#pragma once

#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "host/simulation/SimulationFile.h"
#include "host/simulation/SimulationFolder.h"

namespace emstatus::host {

/// What the module simulates.
struct SimulationState {
  SimulatedParts parts;
  /// Those of them that the file no longer names: a module keeps what it once read.
  std::set<std::string, std::less<>> kept;
  /// Those of them that the tree does not hold; left empty by the tracker.
  std::set<std::string, std::less<>> absent;
  bool byHand = false;
  /// Nothing: for ever.
  std::optional<WallTime> until;

  bool InForce() const { return !parts.empty(); }
  friend bool operator==(const SimulationState&, const SimulationState&) = default;
};

/// Follows the simulation file in step with the module, which reads it before each scan and never forgets an
/// entry. [any thread]
class SimulationTracker {
 public:
  explicit SimulationTracker(SimulationFolder folder) : folder_(std::move(folder)) {}

  /// The module has just read the file. Costs one call of stat() while the file stays as it is.
  void ScanBegins();
  /// The tree holds what that scan found.
  void ScanEnds();

  /// What the tree may show as simulated: while a scan goes on, also what the one before simulated.
  SimulationState State() const;

 private:
  void Follow();

  const SimulationFolder folder_;
  mutable std::mutex lock_;
  // Guarded by lock_
  std::optional<SimulationFolder::Stamp> stamp_;
  SimulatedParts everRead_;
  SimulationState current_;
  /// Of the scan before, while one goes on.
  SimulationState previous_;
};

}  // namespace emstatus::host
