#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "host/commands/HostOptions.h"
#include "host/module/TrafficObserver.h"

namespace emstatus::host {

/// What goes along with a run. All of it is called on the main thread but the observer.
struct RunCompanion {
  TrafficObserver* traffic = nullptr;
  /// The module is at work; nothing is shown yet.
  std::function<void()> started = [] {};
  /// A scan has ended and is about to be shown; false: it is the last one.
  std::function<bool()> scanEnds = [] { return true; };
  /// The run ends by itself after so long.
  std::optional<std::chrono::seconds> limit;
};

/// Runs a module as emhost run does, until a stop signal or until the companion ends it; the exit code.
/// Throws what the companion throws, and a std::runtime_error when it cannot begin.
int RunAccompanied(const HostOptions& options, bool json, const RunCompanion& companion);

}  // namespace emstatus::host
