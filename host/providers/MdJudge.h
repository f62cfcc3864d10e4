#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "host/providers/MdArray.h"
#include "host/providers/Reading.h"

namespace emstatus::host {

/// What is remembered of an array from read to read.
struct MdMemory {
  using Clock = std::chrono::steady_clock;
  /// The slot that each member had: one that was thrown out no longer tells it.
  std::map<std::string, std::uint32_t> slots;
  /// The most devices that it had at once, spares among them.
  std::size_t mostDevices = 0;
  /// Since when writing has waited for the program that keeps its metadata.
  std::optional<Clock::time_point> pendingSince;
  /// Read errors of each member when reading began, or that were confirmed.
  std::map<std::string, std::int64_t> oldErrors;
};

/// For how long writing may wait for the program that keeps an array's metadata.
inline constexpr std::chrono::seconds kMdPendingLimit{20};

/// The reading of an array. Updates `memory`. [any thread]
Reading JudgeArray(const MdArray& array, MdMemory& memory, MdMemory::Clock::time_point now);

/// The reading of one of its members. Updates `memory`. [any thread]
Reading JudgeMember(const MdArray& array, const MdMember& member, MdMemory& memory);

}  // namespace emstatus::host
