#include "host/view/PerformanceData.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <set>

namespace emstatus::host {
namespace {

/// Classes whose objects have a number: when it is missing, it is not known.
constexpr ObjectClass kMeasured[] = {
    ObjectClass::Temperature,
    ObjectClass::Fan,
    ObjectClass::Voltage,
    ObjectClass::Current,
    ObjectClass::Power,
    ObjectClass::Humidity,
    ObjectClass::ThermalZone,
    ObjectClass::CpuPressure,
    ObjectClass::MemoryUse,
    ObjectClass::SwapUse,
    ObjectClass::IoPressure,
    ObjectClass::MemoryPressure,
    ObjectClass::DiskTemperature,
    ObjectClass::FilesystemSpace,
    ObjectClass::FilesystemInodes,
};

/// Rounded to thousandths, without an exponent.
std::string PlainNumber(double exact) {
  constexpr double kThousandths = 1000.0;
  const double value = std::round(exact * kThousandths) / kThousandths;
  std::array<char, 400> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  return {text.data(), end.ptr};
}

std::string PluginUnit(Unit unit) {
  switch (unit) {
    case Unit::Percent:
      return "%";
    case Unit::Byte:
      return "B";
    case Unit::Second:
      return "s";
    default:
      return {};
  }
}

bool CanBeNegative(Unit unit) {
  return unit == Unit::Celsius || unit == Unit::Volt || unit == Unit::Ampere || unit == Unit::None;
}

/// The range in which nothing is wrong. A plain number is a range from 0.
std::string Range(const std::optional<double>& lower, const std::optional<double>& upper, Unit unit) {
  if (lower) {
    return PlainNumber(*lower) + ":" + (upper ? PlainNumber(*upper) : "");
  }
  return upper ? (CanBeNegative(unit) ? "~:" : "") + PlainNumber(*upper) : std::string();
}

std::string ValueText(const Measurement& measurement) {
  const Unit unit = measurement.unit;
  const Limits& limits = measurement.limits;
  std::string text = PlainNumber(measurement.value) + PluginUnit(unit) + ";" +
                     Range(limits.lowerWarning, limits.upperWarning, unit) + ";" +
                     Range(limits.lowerCritical, limits.upperCritical, unit) + ";" +
                     (CanBeNegative(unit) ? "" : "0") + ";" + (unit == Unit::Percent ? "100" : "");
  text.erase(text.find_last_not_of(';') + 1);
  return text;
}

/// Nothing: the leaf has no number.
std::string NumberOf(const StatusNode& leaf) {
  if (!leaf.object) {
    return {};
  }
  const Reading& reading = leaf.object->reading;
  if (reading.quality == Quality::Good && reading.measurement && std::isfinite(reading.measurement->value)) {
    return ValueText(*reading.measurement);
  }
  return std::ranges::find(kMeasured, leaf.object->address.objectClass) == std::end(kMeasured) ? "" : "U";
}

/// The names on the way, one that only repeats the one above it left out, without what cannot stand there.
std::string PlainLabel(const NodePath& path) {
  std::string label;
  for (std::size_t at = 1; at < path.size(); ++at) {
    const std::string name = NodeName(*path[at]);
    if (at == 1 || name != NodeName(*path[at - 1])) {
      label += (label.empty() ? "" : "/") + name;
    }
  }
  const auto& object = path.back()->object;
  if (object && object->address.cabinet != 0) {
    label += " (cabinet " + std::to_string(object->address.cabinet) + ")";
  }
  std::ranges::replace_if(
      label, [](char letter) { return letter == '=' || letter == '|' || std::uint8_t(letter) < ' '; }, '_');
  return label;
}

std::string Quoted(const std::string& label) {
  std::string quoted = "'";
  for (const char letter : label) {
    quoted += letter == '\'' ? "''" : std::string(1, letter);
  }
  return quoted + "'";
}

void CollectNumbers(NodePath& path, std::set<std::string>& labels, std::string& text) {
  const StatusNode& node = *path.back();
  if (const std::string number = node.children.empty() ? NumberOf(node) : std::string(); !number.empty()) {
    const std::string plain = PlainLabel(path);
    std::string label = plain;
    for (int copy = 2; !labels.insert(label).second; ++copy) {
      label = plain + " #" + std::to_string(copy);
    }
    text += (text.empty() ? "" : " ") + Quoted(label) + "=" + number;
  }
  for (const StatusNode& child : node.children) {
    path.push_back(&child);
    CollectNumbers(path, labels, text);
    path.pop_back();
  }
}

}  // namespace

std::string PerformanceData(const NodePath& node) {
  std::string text;
  std::set<std::string> labels;
  NodePath path = node;
  CollectNumbers(path, labels, text);
  return text;
}

}  // namespace emstatus::host
