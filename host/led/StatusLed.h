#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "host/led/LedDevice.h"
#include "host/machine/Worker.h"

namespace emstatus::host {

/// Shows the value of the error LED at a LED of this machine: off from the start, given back at the end. A
/// worker of its own does it, so that a LED that hangs delays nothing.
class StatusLed {
 public:
  /// Takes what there is to say, a line without a line end. [any thread; also after the end when the LED
  /// hangs]
  using Teller = std::function<void(const std::string&)>;

  /// How often it is looked whether the LED still is as it was set.
  static constexpr std::chrono::milliseconds kLookAgain{10000};
  /// How long the LED may take before that is told.
  static constexpr std::chrono::milliseconds kSlow{3000};

  /// Throws a std::runtime_error when there is no such LED.
  StatusLed(const std::string& name, std::unique_ptr<SystemFiles> files, Teller teller,
            std::chrono::milliseconds lookAgain = kLookAgain, std::chrono::milliseconds slow = kSlow);
  StatusLed(const StatusLed&) = delete;
  StatusLed& operator=(const StatusLed&) = delete;
  /// Waits for the LED for a moment only.
  ~StatusLed();

  /// Shows what the scan has set; to be called after each. Never waits. [owner's thread]
  void Show(std::uint32_t ledValue);

 private:
  struct State;

  const std::shared_ptr<State> state_;
  const std::chrono::milliseconds slow_;
  bool slowTold_ = false;
  Worker worker_;
};

}  // namespace emstatus::host
