#include <map>
#include <set>

#include "host/configcheck/Checks.h"

namespace emstatus::host {
namespace {

constexpr const char* kRootNode = "root";

/// Places of the sections by the names that the tree, or a simulation, knows their parts by.
using Names = std::map<std::string, const Definition*, std::less<>>;

bool IsAlternativeOf(const Definition& left, const Definition& right) {
  return left.name + ".alt" == right.name || right.name + ".alt" == left.name;
}

void CheckInstanceNames(const ConfigurationCheck& check, const Definition& definition, Names& instanceNames) {
  const Problems::Place place = PlaceOf(check.ini, definition.section, "InstanceName");
  const auto [other, isNew] = instanceNames.try_emplace(definition.instanceName, &definition);
  if (!isNew && !IsAlternativeOf(*other->second, definition)) {
    check.problems.Warning(place,
                           "instances of " + other->second->name + " and " + definition.name +
                               " have the same names (" + definition.instanceName +
                               std::to_string(definition.instanceBaseIndex) +
                               "), so that a simulation always forces both",
                           "give one of them another InstanceName");
  }
  const std::size_t stem = definition.instanceName.find_last_not_of("0123456789") + 1;
  if (stem == definition.instanceName.size()) {
    return;
  }
  const auto shorter = instanceNames.find(std::string_view(definition.instanceName).substr(0, stem));
  if (shorter != instanceNames.end()) {
    check.problems.Warning(place,
                           "it ends in a digit and meets the names of " + shorter->second->name + ": " +
                               definition.instanceName + "0 is an instance of either",
                           "let InstanceName end in a letter");
  }
}

/// A component's own name, which a simulation uses, against the names of instances.
void CheckComponentName(const ConfigurationCheck& check, const Definition& definition,
                        const Names& instanceNames) {
  const std::size_t stem = definition.name.find_last_not_of("0123456789") + 1;
  if (definition.HasInstances() || stem == definition.name.size()) {
    return;
  }
  const auto found = instanceNames.find(std::string_view(definition.name).substr(0, stem));
  if (found != instanceNames.end()) {
    check.problems.Warning({definition.line, definition.section},
                           definition.name + " is also the name of an instance of " + found->second->name +
                               ", so that a simulation forces both",
                           "give the component or the instances another name");
  }
}

}  // namespace

void CheckIds(const ConfigurationCheck& check) {
  Names instanceNames;
  for (const auto& [name, definition] : check.configuration.components) {
    if (definition.isUsable && definition.HasInstances()) {
      CheckInstanceNames(check, definition, instanceNames);
    }
  }
  std::set<std::string> subsystems;
  for (const ConfiguredSubsystem& subsystem : check.configuration.subsystems) {
    subsystems.insert(subsystem.name);
  }
  for (const ConfiguredSubsystem& subsystem : check.configuration.subsystems) {
    if (subsystem.name == kRootNode) {
      check.problems.Note(PlaceOf(check.ini, "System", "Subsystems"),
                          "\"root\" is the id of the system; in the tree the subsystem's is root/root",
                          "give it another name");
    }
    for (const std::string& name : subsystem.components) {
      const Definition& definition = check.configuration.components.at(name);
      if (name == kRootNode || (subsystems.contains(name) && name != subsystem.name)) {
        check.problems.Warning({definition.line, definition.section},
                               (name == kRootNode ? "the system" : "a subsystem that it does not belong to") +
                                   std::string(" has this id; in the tree the component's is ") +
                                   subsystem.name + "/" + name,
                               "give the component another name");
      }
      CheckComponentName(check, definition, instanceNames);
    }
  }
}

}  // namespace emstatus::host
