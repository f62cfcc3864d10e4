#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace emstatus::host {

/// Holds a module before each of its scans until it is let through, so that what it reads can be arranged
/// between two of them.
class ScanGate {
 public:
  /// Waits to be let through; at once when the gate is open. [the module's thread, as a scan begins]
  void Pass();

  /// Waits until the module is held; false when it does not come within `limit`. [any thread]
  bool WaitUntilHeld(std::chrono::milliseconds limit);

  /// Lets one scan through. [any thread]
  void LetOne();

  /// Opens it for good: to be called before the module is stopped. [any thread]
  void Open();

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  // Guarded by lock_
  unsigned let_ = 0;
  bool open_ = false;
  bool holds_ = false;
};

}  // namespace emstatus::host
