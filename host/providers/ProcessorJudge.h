#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/providers/Reading.h"

namespace emstatus::host {

/// One processor package (socket) with its logical processors.
struct PackageFacts {
  std::uint32_t number = 0;
  /// By their numbers; an offline one belongs to the package that it was in when it was last online.
  std::set<std::uint32_t> online;
  std::set<std::uint32_t> offline;
  /// Times that it slowed itself down because of heat, since it was started; absent where it is not counted.
  std::optional<std::uint64_t> throttled;
};

/// What is remembered of a package from read to read.
struct PackageMemory {
  std::set<std::uint32_t> wasOnline;
  std::optional<std::uint64_t> lastThrottled;
  /// Throttlings seen, with their time, within kThrottleWindow.
  std::deque<std::pair<std::chrono::steady_clock::time_point, std::uint64_t>> recent;
};

/// For how long a throttling is told.
inline constexpr std::chrono::minutes kThrottleWindow{5};

/// Whether the logical processors of a package run. Those that were offline from the start are meant to be;
/// one that went offline is a warning. Updates `memory`. [any thread]
Reading JudgePackage(const PackageFacts& package, PackageMemory& memory);

/// Whether a package was slowed down by heat within the last kThrottleWindow; absent where that is not
/// counted. Updates `memory`. [any thread]
std::optional<Reading> JudgeThrottle(const PackageFacts& package, PackageMemory& memory,
                                     std::chrono::steady_clock::time_point now);

}  // namespace emstatus::host
