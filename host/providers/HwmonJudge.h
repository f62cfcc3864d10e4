#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/providers/HwmonChannel.h"
#include "host/providers/Reading.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// The attributes of a channel as they were read, by item ("input").
using HwmonValues = std::map<std::string, FileResult<std::string>, std::less<>>;

/// What is remembered of a channel from read to read.
struct HwmonMemory {
  using Clock = std::chrono::steady_clock;
  /// When an alarm was last seen, by item; alarms clear when they are read.
  std::map<std::string, Clock::time_point, std::less<>> alarms;
  /// Limits that were passed and whose hysteresis has not been reached since.
  std::set<std::string, std::less<>> passed;
  /// A fan that has turned, an intrusion contact that was seen closed.
  bool wasGood = false;
};

/// For how long an alarm counts after it was seen.
inline constexpr std::chrono::seconds kAlarmHold{60};

/// The reading of a channel, without id and name; absent when its value is gone. Limits that were never set
/// or cannot be are ignored, and so are their alarms. Updates `memory`. [any thread]
std::optional<Reading> JudgeChannel(const HwmonChannelKey& key, const HwmonValues& values,
                                    HwmonMemory& memory, HwmonMemory::Clock::time_point now);

/// When two or more fans of a chip that ought to turn all read 0, the tachometers are not trusted: one
/// reading says so, the others of these fans become inactive and point to it. [any thread]
void DistrustTachometers(std::vector<Reading>& readingsOfChip, const std::string& chip);

}  // namespace emstatus::host
