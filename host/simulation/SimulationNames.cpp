#include "host/simulation/SimulationNames.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <utility>

#include "host/configuration/Configuration.h"
#include "host/configuration/IniFile.h"
#include "host/configuration/NearestName.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kNamesTold = 3;
constexpr long kLargestStatus = 255;

/// A number as the module writes it, without leading zeros; it is taken off `text`.
std::optional<std::uint32_t> TakeNumber(std::string_view& text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.data()));
  if (error != std::errc() || (digits.size() > 1 && digits[0] == '0')) {
    return std::nullopt;
  }
  text.remove_prefix(digits.size());
  return number;
}

bool HasMapping(const IniFile& ini, const std::string& section) {
  return std::ranges::any_of(ini.Keys(section), [](const std::string& key) {
    return key.starts_with("Status.") || key.starts_with("Redundancy.");
  });
}

/// Not what the module has no way to ask.
bool IsUsable(const IniFile& ini, const std::string& section) {
  const bool named = ini.Value(section, "DisplayName") || ini.Value(section, "DisplayNameRequest");
  const std::string request = ini.Value(section, "StatusRequest").value_or("");
  return named && HasMapping(ini, section) && request.find("\"SNMP\"") == std::string::npos;
}

std::string List(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) {
    list += (list.empty() ? "" : ", ") + name;
  }
  return list;
}

}  // namespace

SimulationNames::SimulationNames(std::string_view configurationText) {
  const IniFile ini(configurationText);
  for (const std::string& word : ini.Keys("StatusMapping")) {
    const long value = std::strtol(ini.Value("StatusMapping", word).value_or("0").c_str(), nullptr, 10);
    if (value <= kLargestStatus) {
      statuses_[word] = static_cast<std::uint8_t>(value);
    }
  }
  for (const std::string& subsystem : SplitAtBlanks(ini.Value("System", "Subsystems").value_or(""))) {
    if (ini.Value("Subsystem." + subsystem, "DisplayName")) {
      AddComponents(ini, ini.Value("Subsystem." + subsystem, "Components").value_or(""));
    }
  }
}

void SimulationNames::AddComponents(const IniFile& ini, const std::string& names) {
  for (const std::string& name : SplitAtBlanks(names)) {
    const std::string section = "Component." + name;
    if (!IsUsable(ini, section)) {
      continue;
    }
    AddComponent(ini, name, section);
    // The instances of an alternative definition have its names.
    if (components_.back().hasInstances && IsUsable(ini, section + ".alt")) {
      AddComponent(ini, name + ".alt", section + ".alt");
    }
  }
}

void SimulationNames::AddComponent(const IniFile& ini, const std::string& name, const std::string& section) {
  Component component;
  component.name = name;
  component.hasInstances =
      ini.Number(section, "NrInstances", 0) == 0 && ini.Value(section, "NrInstancesRequest").has_value();
  component.instanceName = ini.Value(section, "InstanceName").value_or(name);
  component.firstIndex = static_cast<std::uint8_t>(ini.Number(section, "InstanceBaseIndex", 0));
  component.handlesCabinets = ini.Number(section, "HandleCabinets", 0) != 0;
  components_.push_back(std::move(component));
}

bool SimulationNames::IsInstance(const Component& component, std::string_view name) const {
  if (!component.hasInstances || !name.starts_with(component.instanceName)) {
    return false;
  }
  name.remove_prefix(component.instanceName.size());
  const auto index = TakeNumber(name);
  if (!index || *index < component.firstIndex) {
    return false;
  }
  if (component.handlesCabinets && name.starts_with('-')) {
    name.remove_prefix(1);
    return TakeNumber(name) && name.empty();
  }
  return name.empty();
}

std::string SimulationNames::Misuse(const Component& component, const std::string& name) const {
  const std::string first = component.instanceName + std::to_string(component.firstIndex);
  if (component.hasInstances && (name == component.name || name == component.instanceName)) {
    return "\"" + name + "\" has instances; name one of them: " + first + ", " + component.instanceName +
           std::to_string(component.firstIndex + 1) + ", ...";
  }
  std::string_view rest = name;
  if (!component.hasInstances || !rest.starts_with(component.instanceName)) {
    return {};
  }
  rest.remove_prefix(component.instanceName.size());
  if (rest.empty() || rest.find_first_not_of("0123456789-") != std::string_view::npos) {
    return {};
  }
  return "\"" + name + "\" can be no instance of " + component.name + ": the first is " + first +
         (component.handlesCabinets
              ? ", with extension cabinets " + first + "-0 in the server and " + first + "-1 in cabinet 1"
              : "");
}

std::vector<std::string> SimulationNames::Nearest(const std::string& name) const {
  const std::size_t stem = name.find_last_not_of("0123456789-") + 1;
  std::vector<std::pair<std::size_t, std::string>> rated;
  for (const Component& component : components_) {
    const std::string number = component.hasInstances && stem < name.size() &&
                                       IsInstance(component, component.instanceName + name.substr(stem))
                                   ? name.substr(stem)
                                   : std::to_string(component.firstIndex);
    const std::string known = component.hasInstances ? component.instanceName + number : component.name;
    const std::size_t distance = std::min(NameDistance(name, known), NameDistance(name, component.name));
    if (known.find('.') == std::string::npos) {
      rated.emplace_back(distance, known);
    }
  }
  std::ranges::stable_sort(rated, {}, &std::pair<std::size_t, std::string>::first);
  std::vector<std::string> nearest;
  for (auto& [distance, known] : rated) {
    if (nearest.size() < kNamesTold && std::ranges::find(nearest, known) == nearest.end()) {
      nearest.push_back(std::move(known));
    }
  }
  return nearest;
}

void SimulationNames::Check(const std::string& name) const {
  if (name.find('.') != std::string::npos) {
    throw std::runtime_error("\"" + name +
                             "\" cannot be simulated: in the simulation file a dot ends the name, and "
                             "behind it only ObjectStatus and IsCss may stand.");
  }
  const auto known = [&](const Component& component) {
    return IsInstance(component, name) || (!component.hasInstances && component.name == name);
  };
  if (std::ranges::any_of(components_, known)) {
    return;
  }
  for (const Component& component : components_) {
    if (const std::string misuse = Misuse(component, name); !misuse.empty()) {
      throw std::runtime_error(misuse);
    }
  }
  const auto nearest = Nearest(name);
  throw std::runtime_error("the configuration knows no \"" + name + "\"" +
                           (nearest.empty() ? ": it has no components." : "; nearest are " + List(nearest)));
}

std::string SimulationNames::Advice(const std::string& name) const {
  const bool bare = name.find('-') == std::string::npos;
  const auto manyCabinets = [&](const Component& component) {
    return component.handlesCabinets && IsInstance(component, name);
  };
  return bare && std::ranges::any_of(components_, manyCabinets)
             ? "on a machine with extension cabinets, the server's " + name + " is " + name + "-0."
             : "";
}

std::uint8_t SimulationNames::StatusOf(const std::string& text) const {
  if (const auto word = statuses_.find(text); word != statuses_.end()) {
    return word->second;
  }
  long value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc() && end == text.data() + text.size() && value >= 0 && value <= kLargestStatus) {
    return static_cast<std::uint8_t>(value);
  }
  std::vector<std::string> words;
  for (const auto& [word, status] : statuses_) {
    words.push_back(word);
  }
  throw std::runtime_error("\"" + text + "\" is no status: one of " + List(words) +
                           (words.empty() ? "" : ", or ") + "a number from 0 to 255 is expected");
}

}  // namespace emstatus::host
