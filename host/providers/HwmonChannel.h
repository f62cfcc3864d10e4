#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/providers/Reading.h"

namespace emstatus::host {

/// A kind of hwmon channel: how its numbers are to be understood.
struct HwmonType {
  /// In the names of its attributes ("temp" in "temp1_input").
  std::string_view prefix;
  ObjectClass objectClass = ObjectClass::Temperature;
  Unit unit = Unit::None;
  /// Raw numbers in one unit (1000 for m°C).
  double divisor = 1;
  /// What a sensor in a server can measure; anything beyond is not believed.
  double lowest = 0;
  double highest = 0;
};

/// Names one channel of a chip: "temp" and 1.
struct HwmonChannelKey {
  const HwmonType* type = nullptr;
  std::uint32_t index = 0;

  /// As in the names of its attributes ("temp1").
  std::string Text() const;
  friend auto operator<=>(const HwmonChannelKey&, const HwmonChannelKey&) = default;
};

/// The attributes of each channel, without its name ("input", "max_alarm").
using HwmonChannels = std::map<HwmonChannelKey, std::set<std::string>>;

/// The channels among the names of the files of a chip. Kinds that nobody knows, controls (pwm) and counters
/// (energy) are left out, and so is what has limits but neither a value nor an alarm. [any thread]
HwmonChannels ChannelsIn(const std::vector<std::string>& fileNames);

/// The attribute that holds the channel's value ("input", for some power meters "average"); absent where only
/// alarms are told. [any thread]
std::optional<std::string> ValueItem(const std::set<std::string>& items);

/// Whether an attribute changes seldom, if ever (limits, labels), so that it need not be read every time.
/// [any thread]
bool IsSettled(std::string_view item);

/// Whether an attribute is used at all. [any thread]
bool IsUsed(std::string_view item);

/// Whether a raw number is what a device or driver gives instead of a value (all bits set, in any unit). [any
/// thread]
bool IsSentinel(std::int64_t raw);

}  // namespace emstatus::host
