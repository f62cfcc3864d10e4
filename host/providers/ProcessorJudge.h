#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>

#include "host/providers/Reading.h"
#include "host/providers/RecentCount.h"

namespace emstatus::host {

/// One processor package (socket) with its logical processors.
struct PackageFacts {
  std::uint32_t number = 0;
  /// By their numbers; an offline one belongs to the package that it was in when it was last online.
  std::set<std::uint32_t> online;
  std::set<std::uint32_t> offline;
  /// Of the offline ones: the second threads of cores, while the administrator has switched those off.
  std::set<std::uint32_t> switchedOff;
  /// Logical processors that were never online, so that nobody knows in which package they are; told with
  /// one.
  std::size_t unplaced = 0;
  /// Times that heat slowed it down since it was started, by core and as a whole; empty where that is not
  /// counted. What is offline tells nothing.
  std::map<std::uint32_t, std::uint64_t> throttledCores;
  std::optional<std::uint64_t> throttled;
};

/// For how long a throttling is told.
inline constexpr std::chrono::minutes kThrottleWindow{5};

/// What is remembered of a package from read to read.
struct PackageMemory {
  std::set<std::uint32_t> wasOnline;
  bool isThrottlingCounted = false;
  std::map<std::uint32_t, RecentCount> throttledCores;
  RecentCount throttled{kThrottleWindow};
};

/// Whether the logical processors of a package run. Those that were offline from the start are meant to be;
/// one that went offline, or is no longer there, is a warning, and all of them critical. Updates `memory`.
/// [any thread]
Reading JudgePackage(const PackageFacts& package, PackageMemory& memory);

/// Whether a package was slowed down by heat within the last kThrottleWindow; absent where that is not
/// counted. Updates `memory`. [any thread]
std::optional<Reading> JudgeThrottle(const PackageFacts& package, PackageMemory& memory,
                                     std::chrono::steady_clock::time_point now);

}  // namespace emstatus::host
