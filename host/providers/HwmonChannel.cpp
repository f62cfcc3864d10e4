#include "host/providers/HwmonChannel.h"

#include <algorithm>
#include <array>
#include <limits>

#include "host/providers/KernelText.h"

namespace emstatus::host {
namespace {

constexpr HwmonType kTypes[] = {
    {"temp", ObjectClass::Temperature, Unit::Celsius, 1000, -40, 150},
    {"fan", ObjectClass::Fan, Unit::RevolutionsPerMinute, 1, 0, 50000},
    {"in", ObjectClass::Voltage, Unit::Volt, 1000, -100, 1000},
    {"curr", ObjectClass::Current, Unit::Ampere, 1000, -2000, 2000},
    {"power", ObjectClass::Power, Unit::Watt, 1e6, -100000, 100000},
    {"humidity", ObjectClass::Humidity, Unit::Percent, 1000, 0, 100},
    {"intrusion", ObjectClass::Intrusion, Unit::None, 1, 0, 1},
};

constexpr std::array<std::string_view, 12> kSettled = {
    "label", "min",      "max",      "lcrit",     "crit",           "emergency",
    "cap",   "min_hyst", "max_hyst", "crit_hyst", "emergency_hyst", "lcrit_hyst"};
constexpr std::array<std::string_view, 12> kChanging = {
    "input",     "average",   "fault",       "enable",     "target",    "alarm",
    "min_alarm", "max_alarm", "lcrit_alarm", "crit_alarm", "cap_alarm", "emergency_alarm"};

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

bool IsTold(const std::set<std::string>& items) {
  return std::ranges::any_of(items, [](const std::string& item) {
    return item == "input" || item == "average" || item == "fault" || item.ends_with("alarm");
  });
}

}  // namespace

std::string HwmonChannelKey::Text() const {
  return std::string(type->prefix) + std::to_string(index);
}

HwmonChannels ChannelsIn(const std::vector<std::string>& fileNames) {
  HwmonChannels channels;
  for (const std::string_view name : fileNames) {
    const std::size_t underscore = name.find('_');
    const std::string_view head = name.substr(0, underscore);
    const auto digit = std::ranges::find_if(head, IsDigit);
    const std::string_view prefix(head.begin(), digit);
    const auto* type = std::ranges::find(kTypes, prefix, &HwmonType::prefix);
    const auto index = NumberAfter(head, prefix);
    if (underscore == std::string_view::npos || type == std::end(kTypes) || !index) {
      continue;
    }
    const std::string_view item = name.substr(underscore + 1);
    if (IsUsed(item)) {
      channels[{type, *index}].emplace(item);
    }
  }
  std::erase_if(channels, [](const auto& channel) { return !IsTold(channel.second); });
  return channels;
}

std::optional<std::string> ValueItem(const std::set<std::string>& items) {
  for (const char* item : {"input", "average"}) {
    if (items.contains(item)) {
      return item;
    }
  }
  return std::nullopt;
}

bool IsSettled(std::string_view item) {
  return std::ranges::find(kSettled, item) != kSettled.end();
}

bool IsUsed(std::string_view item) {
  return IsSettled(item) || std::ranges::find(kChanging, item) != kChanging.end();
}

bool IsSentinel(std::int64_t raw) {
  constexpr std::int64_t kAllSet[] = {0xFFFF, 0x7FFFFFFF, 0xFFFFFFFF};
  if (raw == std::numeric_limits<std::int64_t>::max() || raw == std::numeric_limits<std::int64_t>::min()) {
    return true;
  }
  for (const std::int64_t allSet : kAllSet) {
    for (const std::int64_t scale : {1, 1000, 1000000}) {
      if (raw == allSet * scale) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace emstatus::host
