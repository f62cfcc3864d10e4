#include "host/simulation/SimulateArguments.h"

#include <charconv>
#include <map>
#include <set>
#include <stdexcept>
#include <string_view>

namespace emstatus::host {
namespace {

constexpr std::chrono::seconds kLongest = std::chrono::hours(24 * 366);

constexpr std::string_view kMappedStatus = "MappedStatus";
constexpr std::string_view kObjectStatus = "ObjectStatus";
constexpr std::string_view kIsCss = "IsCss";

[[noreturn]] void Fail(const std::string& setting, const std::string& expected) {
  throw std::runtime_error("\"" + setting + "\": " + expected);
}

template <typename Number>
std::optional<Number> WholeNumber(std::string_view text) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

struct Setting {
  std::string name;
  std::string_view type = kMappedStatus;
  std::string value;
};

Setting SplitSetting(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
    Fail(text, "COMPONENT=STATUS is expected");
  }
  Setting setting{text.substr(0, equals), kMappedStatus, text.substr(equals + 1)};
  for (const std::string_view type : {kMappedStatus, kObjectStatus, kIsCss}) {
    if (setting.name.ends_with("." + std::string(type))) {
      setting.type = type;
      setting.name.resize(setting.name.size() - type.size() - 1);
      break;
    }
  }
  return setting;
}

void Apply(const Setting& setting, const std::string& text, const SimulationNames& names,
           SimulatedPart& part) {
  if (setting.type == kMappedStatus) {
    part.mappedStatus = names.StatusOf(setting.value);
    return;
  }
  const auto number = WholeNumber<std::int32_t>(setting.value);
  if (setting.type == kIsCss) {
    if (number != 0 && number != 1) {
      Fail(text, "1 (the customer can mend it) or 0 is expected");
    }
    part.isCss = *number;
    return;
  }
  if (!number || *number == SimulatedPart::kNotSimulated) {
    Fail(text, "a whole number of 32 bits is expected, and not -1, which simulates nothing");
  }
  part.objectStatus = *number;
}

}  // namespace

SimulatedParts ParseSettings(const std::vector<std::string>& settings, const SimulationNames& names) {
  SimulatedParts parts;
  std::map<std::string, std::set<std::string_view>> given;
  for (const std::string& text : settings) {
    const Setting setting = SplitSetting(text);
    names.Check(setting.name);
    std::set<std::string_view>& types = given[setting.name];
    if (!types.insert(setting.type).second) {
      Fail(text, "this is said twice of " + setting.name);
    }
    if (types.contains(kMappedStatus) && types.contains(kObjectStatus)) {
      Fail(text, "a status and an object status exclude each other");
    }
    Apply(setting, text, names, parts[setting.name]);
  }
  // What the file cannot hold would be read back as something else.
  if (ReadSimulation(WriteSimulation(parts, std::nullopt)).parts != parts) {
    throw std::runtime_error("the simulation file cannot hold these names.");
  }
  return parts;
}

std::optional<std::chrono::seconds> ParseDuration(const std::string& text) {
  if (text == "ever") {
    return std::nullopt;
  }
  constexpr std::string_view kUnits = "smh";
  constexpr int kSeconds[] = {1, 60, 3600};
  const std::size_t unit = text.empty() ? std::string_view::npos : kUnits.find(text.back());
  const auto number =
      unit == std::string_view::npos ? std::nullopt : WholeNumber<int>(text.substr(0, text.size() - 1));
  if (!number || *number <= 0 || *number > kLongest.count() / kSeconds[unit]) {
    throw std::runtime_error("\"" + text +
                             "\" is no time: 90s, 10m, 2h (a year at most) or ever is expected");
  }
  return std::chrono::seconds(*number) * kSeconds[unit];
}

}  // namespace emstatus::host
