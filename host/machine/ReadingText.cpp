#include "host/machine/ReadingText.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "host/machine/Numbering.h"

namespace emstatus::host {
namespace {

std::string Printed(int decimals, double value) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
  std::string number = text.data();
  if (number.find('.') != std::string::npos) {
    number.erase(number.find_last_not_of('0') + 1);
    if (number.back() == '.') {
      number.pop_back();
    }
  }
  return number == "-0" ? "0" : number;
}

std::string Scaled(double value, double step, const std::array<std::string_view, 5>& prefixes,
                   std::string_view symbol) {
  std::size_t power = 0;
  while (std::fabs(value) >= step && power + 1 < prefixes.size()) {
    value /= step;
    ++power;
  }
  return Printed(power == 0 ? 0 : 1, value) + " " + std::string(prefixes[power]) + std::string(symbol);
}

int Decimals(Unit unit) {
  switch (unit) {
    case Unit::RevolutionsPerMinute:
    case Unit::Count:
      return 0;
    case Unit::Volt:
    case Unit::Ampere:
      return 3;
    default:
      return 1;
  }
}

enum class Breach { None, LowerCritical, UpperCritical, LowerWarning, UpperWarning };

Breach BreachOf(const Measurement& measurement) {
  const Limits& limits = measurement.limits;
  if (limits.lowerCritical && measurement.value < *limits.lowerCritical) {
    return Breach::LowerCritical;
  }
  if (limits.upperCritical && measurement.value >= *limits.upperCritical) {
    return Breach::UpperCritical;
  }
  if (limits.lowerWarning && measurement.value < *limits.lowerWarning) {
    return Breach::LowerWarning;
  }
  if (limits.upperWarning && measurement.value >= *limits.upperWarning) {
    return Breach::UpperWarning;
  }
  return Breach::None;
}

}  // namespace

std::string NumberText(double value, Unit unit) {
  switch (unit) {
    case Unit::Byte:
      return Scaled(value, 1024, {"", "Ki", "Mi", "Gi", "Ti"}, "B");
    case Unit::BitPerSecond:
      return Scaled(value, 1000, {"", "k", "M", "G", "T"}, "bit/s");
    case Unit::Count:
    case Unit::None:
      return Printed(Decimals(unit), value);
    default:
      return Printed(Decimals(unit), value) + " " + std::string(SymbolOf(unit));
  }
}

std::string LimitBreach(const Measurement& measurement) {
  const Limits& limits = measurement.limits;
  const auto tell = [&](std::string_view what, double limit) {
    return NumberText(measurement.value, measurement.unit) + ", " + std::string(what) + " " +
           NumberText(limit, measurement.unit) + " expected";
  };
  switch (BreachOf(measurement)) {
    case Breach::LowerCritical:
      return tell("at least", *limits.lowerCritical);
    case Breach::UpperCritical:
      return tell("less than", *limits.upperCritical);
    case Breach::LowerWarning:
      return tell("at least", *limits.lowerWarning);
    case Breach::UpperWarning:
      return tell("less than", *limits.upperWarning);
    case Breach::None:
      break;
  }
  return {};
}

Condition ConditionByLimits(const Measurement& measurement) {
  switch (BreachOf(measurement)) {
    case Breach::None:
      return Condition::Good;
    case Breach::LowerWarning:
    case Breach::UpperWarning:
      return Condition::Warning;
    default:
      return Condition::Critical;
  }
}

}  // namespace emstatus::host
