#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "host/configuration/Configuration.h"

namespace emstatus::host {

/// The longest time until a failure of a component shows in the tree, while emhost runs and has gone through
/// its first scans. What is not known of a component, or never comes, is absent.
struct DetectionBudget {
  using Duration = std::chrono::milliseconds;

  /// Its name; an alternative's ends in ".alt".
  std::string component;
  /// Which sources of emhost read its parts; empty for what emhost does not read.
  std::string sources;
  Duration readEvery{0};
  Duration lateAfter{0};
  /// A change is told to the module at once. Otherwise it waits for the next regular scan.
  bool isTold = false;
  /// From the moment at which emhost knows.
  std::optional<Duration> inModule = std::nullopt;
  /// A part fails: it is read, then the module sees it.
  std::optional<Duration> fault = std::nullopt;
  /// A part is not answered for any more: its reading becomes late, which nothing tells to the module.
  std::optional<Duration> silence = std::nullopt;
  /// A part fails of a component that had none and was inactive.
  std::optional<Duration> wasInactive = std::nullopt;
};

/// The module's regular pause between two scans, at its longest. [any thread]
DetectionBudget::Duration LongestPause(const Configuration& configuration);

/// From a change that nothing tells to the module until it shows.
DetectionBudget::Duration UntilRegularScan(const Configuration& configuration);

/// From the module's start until a mandatory component that does not answer is judged; any other is judged by
/// the first scan, after InitialPollingDelaySeconds.
DetectionBudget::Duration UntilSilenceIsJudged(const Configuration& configuration);

/// Of every component that the module asks, in the order of the tree, each followed by its alternative.
std::vector<DetectionBudget> DetectionBudgets(const Configuration& configuration);

}  // namespace emstatus::host
