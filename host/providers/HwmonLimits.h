#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/providers/HwmonJudge.h"

namespace emstatus::host {

/// A limit of a channel.
struct HwmonLimit {
  /// The attribute that holds it ("max").
  std::string_view item;
  bool isUpper = true;
  /// What passing it means.
  Condition condition = Condition::Warning;
  /// Whether the device tells this limit at all.
  bool isTold = false;
  /// Absent when it is not told, was never set, or cannot be.
  std::optional<double> value;
  /// Where it clears again; absent where that is at the limit itself.
  std::optional<double> hysteresis;
};

/// A number among the attributes of a channel, in the unit of its type; absent unless it was read and is one.
std::optional<double> NumberOf(const HwmonValues& values, std::string_view item, double divisor);

/// Whether a flag among the attributes of a channel is set.
bool IsSet(const HwmonValues& values, std::string_view item);

/// The limits of a channel, the most severe first, without those that cannot be meant.
std::vector<HwmonLimit> LimitsOf(const HwmonType& type, const HwmonValues& values);

/// Whether the value is beyond the limit (temperatures: at it).
bool IsPassed(const HwmonLimit& limit, const HwmonType& type, double value);

/// The usable ones for Measurement::limits.
Limits SummaryOf(const std::vector<HwmonLimit>& limits);

}  // namespace emstatus::host
