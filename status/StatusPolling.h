#pragma once

#include <atomic>
#include <cstdint>

#include "config/CurrentConfiguration.h"
#include "config/Simulation.h"
#include "platform/EventHandle.h"
#include "status/SystemScan.h"

namespace emstatus {

/// The routine of the status polling thread: one scan after another, until the host shuts down.
class StatusPolling {
 public:
  StatusPolling(const CurrentConfiguration& configuration, Simulation& simulation, SystemScan& scan,
                EventHandle& wakeUp, const std::atomic<bool>& switchShutdown)
      : configuration_(configuration),
        simulation_(simulation),
        scan_(scan),
        wakeUp_(wakeUp),
        switchShutdown_(switchShutdown) {}

  /// Polls until `switchShutdown`, which is looked at after every wait and scan. [polling thread]
  void Run();

 private:
  void DelayFirstQuery();
  void RunCycle();
  std::uint32_t IntervalSeconds() const;
  void Sleep(std::uint32_t seconds);

  const CurrentConfiguration& configuration_;
  Simulation& simulation_;
  SystemScan& scan_;
  EventHandle& wakeUp_;
  const std::atomic<bool>& switchShutdown_;
  /// Passes since the module was created; never reset.
  std::uint64_t cycleCounter_ = 0;
};

}  // namespace emstatus
