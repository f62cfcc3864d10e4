#include "host/providers/HwmonLimits.h"

#include <algorithm>

#include "host/providers/KernelText.h"

namespace emstatus::host {
namespace {

constexpr double kLongestHysteresis = 60;

std::vector<HwmonLimit> LimitsKnown(ObjectClass objectClass) {
  if (objectClass == ObjectClass::Fan) {
    return {{"min", false, Condition::Warning, false, {}, {}}};
  }
  if (objectClass == ObjectClass::Intrusion) {
    return {};
  }
  return {{"emergency", true, Condition::Critical, false, {}, {}},
          {"crit", true, Condition::Critical, false, {}, {}},
          {"lcrit", false, Condition::Critical, false, {}, {}},
          {"max", true, Condition::Warning, false, {}, {}},
          {"min", false, Condition::Warning, false, {}, {}},
          {"cap", true, Condition::Warning, false, {}, {}}};
}

HwmonLimit* Find(std::vector<HwmonLimit>& limits, std::string_view item) {
  const auto found = std::ranges::find(limits, item, &HwmonLimit::item);
  return found != limits.end() && found->value ? &*found : nullptr;
}

bool IsPossible(const HwmonLimit& limit, const HwmonType& type) {
  const double value = *limit.value;
  switch (type.objectClass) {
    case ObjectClass::Temperature:
      // 0 is what a limit reads that was never set.
      return limit.isUpper ? value > 0 && value <= 200 : value > -100 && value < type.highest;
    case ObjectClass::Fan:
      return value > 0 && value <= 30000;
    case ObjectClass::Voltage:
      return value >= type.lowest && value <= type.highest;
    default:
      return (value > 0 || !limit.isUpper) && value >= type.lowest && value <= type.highest;
  }
}

// Pairs that were never set read 0 and 0, or stand the wrong way round.
void DropUnset(std::vector<HwmonLimit>& limits, std::string_view lower, std::string_view upper,
               bool keepUpper) {
  HwmonLimit* low = Find(limits, lower);
  HwmonLimit* high = Find(limits, upper);
  if (low != nullptr && high != nullptr && *high->value == 0 && *low->value > 0) {
    high->value.reset();
  } else if (low != nullptr && high != nullptr && *low->value >= *high->value) {
    low->value.reset();
    if (!keepUpper) {
      high->value.reset();
    }
  } else if (low == nullptr && high != nullptr && *high->value == 0) {
    high->value.reset();
  } else if (!keepUpper && high == nullptr && low != nullptr && *low->value == 0) {
    low->value.reset();
  }
}

// Both 0, as a chip has them that nobody has set up: then its lower limit is none either.
bool IsPairUnset(const HwmonValues& values, const char* lower, const char* upper) {
  return NumberOf(values, lower, 1) == 0.0 && NumberOf(values, upper, 1) == 0.0;
}

void DropImpossible(std::vector<HwmonLimit>& limits, const HwmonType& type) {
  const bool isTemperature = type.objectClass == ObjectClass::Temperature;
  DropUnset(limits, "min", "max", isTemperature);
  DropUnset(limits, "lcrit", "crit", isTemperature);
  // A warning has to come before what it warns of.
  HwmonLimit* max = Find(limits, "max");
  const HwmonLimit* crit = Find(limits, "crit");
  if (max != nullptr && crit != nullptr && *max->value >= *crit->value) {
    max->value.reset();
  }
  HwmonLimit* min = Find(limits, "min");
  const HwmonLimit* lcrit = Find(limits, "lcrit");
  if (min != nullptr && lcrit != nullptr && *min->value <= *lcrit->value) {
    min->value.reset();
  }
}

std::optional<double> HysteresisOf(const HwmonLimit& limit, const HwmonType& type,
                                   const HwmonValues& values) {
  const auto value = NumberOf(values, std::string(limit.item) + "_hyst", type.divisor);
  if (!value || !limit.value) {
    return std::nullopt;
  }
  const double room = limit.isUpper ? *limit.value - *value : *value - *limit.value;
  return room > 0 && room <= kLongestHysteresis ? value : std::nullopt;
}

void Narrow(std::optional<double>& limit, double value, bool isUpper) {
  limit = isUpper ? std::min(limit.value_or(value), value) : std::max(limit.value_or(value), value);
}

}  // namespace

std::optional<double> NumberOf(const HwmonValues& values, std::string_view item, double divisor) {
  const auto found = values.find(item);
  const auto raw = found != values.end() && found->second ? ParseInteger(found->second.value) : std::nullopt;
  if (!raw || IsSentinel(*raw)) {
    return std::nullopt;
  }
  return static_cast<double>(*raw) / divisor;
}

bool IsSet(const HwmonValues& values, std::string_view item) {
  const auto number = NumberOf(values, item, 1);
  return number && *number != 0;
}

std::vector<HwmonLimit> LimitsOf(const HwmonType& type, const HwmonValues& values) {
  std::vector<HwmonLimit> limits = LimitsKnown(type.objectClass);
  for (HwmonLimit& limit : limits) {
    limit.isTold = values.contains(limit.item);
    limit.value = NumberOf(values, limit.item, type.divisor);
    if (limit.value && !IsPossible(limit, type)) {
      limit.value.reset();
    }
    if ((limit.item == "min" && IsPairUnset(values, "min", "max")) ||
        (limit.item == "lcrit" && IsPairUnset(values, "lcrit", "crit"))) {
      limit.value.reset();
    }
  }
  DropImpossible(limits, type);
  for (HwmonLimit& limit : limits) {
    limit.hysteresis = HysteresisOf(limit, type, values);
  }
  return limits;
}

bool IsPassed(const HwmonLimit& limit, const HwmonType& type, double value) {
  // A power cap is there to be reached.
  if (!limit.value || limit.item == "cap") {
    return false;
  }
  if (type.objectClass == ObjectClass::Temperature && limit.isUpper) {
    return value >= *limit.value;
  }
  return limit.isUpper ? value > *limit.value : value < *limit.value;
}

Limits SummaryOf(const std::vector<HwmonLimit>& limits) {
  Limits summary;
  for (const HwmonLimit& limit : limits) {
    if (!limit.value || limit.item == "cap") {
      continue;
    }
    const bool critical = limit.condition == Condition::Critical;
    Narrow(limit.isUpper ? (critical ? summary.upperCritical : summary.upperWarning)
                         : (critical ? summary.lowerCritical : summary.lowerWarning),
           *limit.value, limit.isUpper);
  }
  return summary;
}

}  // namespace emstatus::host
