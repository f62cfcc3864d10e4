#pragma once

#include <optional>
#include <string>

#include "host/simulation/SimulationFile.h"
#include "host/simulation/SimulationFolder.h"

namespace emstatus::host {

/// Notices at once when the simulation file changes, and ends a simulation when its time is over. Sleeps in
/// between. [main thread]
class SimulationWatch {
 public:
  /// Ends a simulation that is over already. Throws a std::system_error when the system has no means left.
  explicit SimulationWatch(SimulationFolder folder);
  SimulationWatch(const SimulationWatch&) = delete;
  SimulationWatch& operator=(const SimulationWatch&) = delete;
  ~SimulationWatch();

  /// Readable when Take() is to be called.
  int Descriptor() const { return events_; }

  /// Ends what is over, and waits for what comes next. True when the file is another than before.
  bool Take();

  /// Why a simulation that is over could not be ended; told once for each.
  std::optional<std::string> TakeFailure();

 private:
  void Drain() const;
  void Read();
  void EndIfOver();
  void SetTimer() const;

  const SimulationFolder folder_;
  int events_ = -1;
  int timer_ = -1;
  /// Negative where the system has none to spare: then the timer looks now and then.
  int changes_ = -1;

  std::optional<SimulationFolder::Stamp> stamp_;
  std::string text_;
  std::optional<WallTime> until_;
  bool failed_ = false;
  std::optional<std::string> failure_;
};

}  // namespace emstatus::host
