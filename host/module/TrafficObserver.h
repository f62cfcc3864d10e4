#pragma once

#include <chrono>
#include <cstdint>

#include "host/machine/Machine.h"

namespace emstatus::host {

class ModuleSession;

/// Is told all that passes between host and module, in order. It must only take note and must not throw.
class TrafficObserver {
 public:
  TrafficObserver() = default;
  TrafficObserver(const TrafficObserver&) = delete;
  TrafficObserver& operator=(const TrafficObserver&) = delete;
  virtual ~TrafficObserver() = default;

  /// The module is started and has not scanned yet; both stay until its last scan has ended. [main thread]
  virtual void OnStart(ModuleSession& session, const Machine& machine) = 0;

  /// The machine has answered a request. [any thread]
  virtual void OnAnswer(const Request& request, const Answer& answer, std::chrono::milliseconds took) = 0;

  /// An event of the module. [any thread]
  virtual void OnEvent(const Request& event) = 0;

  /// The host wakes the module. [main thread]
  virtual void OnWakeUp() = 0;

  virtual void OnScanBegin() = 0;

  /// The tree holds what the scan found, and `led` is what it sets the error LED to. [the module's thread]
  virtual void OnScanEnd(std::uint32_t led) = 0;
};

}  // namespace emstatus::host
