#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "host/machine/Numbering.h"
#include "host/view/NodeRules.h"

namespace emstatus::host {
namespace {

/// A group's numbers, by the member that knows them best; nothing: no member could be read.
using Groups = std::map<std::pair<std::uint32_t, std::string>, std::optional<Redundancy>>;

/// What a member that was not read, or is gone, last told of its group is of that time.
bool KnowsItsGroup(const Reading& reading) {
  return reading.quality != Quality::Late && reading.quality != Quality::Lost;
}

void AddTo(Groups& groups, const ObjectView& object) {
  const auto& told = object.reading.redundancy;
  if (!told) {
    return;
  }
  auto& group = groups[{object.address.cabinet, told->group}];
  if (KnowsItsGroup(object.reading) && (!group || told->present < group->present)) {
    group = told;
  }
}

std::uint32_t Margin(const Redundancy& group) {
  return group.present > group.needed ? group.present - group.needed : 0;
}

RedundancyMargin Smallest(const Groups& groups) {
  std::optional<Redundancy> smallest;
  for (const auto& [key, group] : groups) {
    if (!group) {
      return {std::nullopt, key.second, 0, 0, 0};
    }
    if (!smallest || std::pair(Margin(*group), std::int64_t(group->present) - group->needed) <
                         std::pair(Margin(*smallest), std::int64_t(smallest->present) - smallest->needed)) {
      smallest = group;
    }
  }
  return {Margin(*smallest), smallest->group, smallest->members, smallest->needed, smallest->present};
}

/// Redundancy covers a fault: the component asks for it, and a group in which enough are left covers it.
bool IsCovered(const Definition& definition) {
  const auto& request = definition.redundancyRequest.element;
  const auto reduced = definition.redundancyMap.find(std::int32_t(RedundancyState::Reduced));
  return definition.redundancyRequest.IsDefined() && request &&
         request->HexNumber("OE") == std::uint32_t(Question::Redundancy) &&
         reduced != definition.redundancyMap.end() && reduced->second.value != 0;
}

/// The objects are groups themselves and judge by how many members are left.
bool AreGroups(const StatusNode& component) {
  const StatusNode& leaf = component.children.empty() ? component : component.children.front();
  return leaf.object && leaf.object->address.objectClass == ObjectClass::NetworkBond;
}

std::optional<RedundancyMargin> MarginOf(const StatusNode& component, const Definition* definition) {
  const bool covered = definition != nullptr && IsCovered(*definition);
  if (!covered && !AreGroups(component)) {
    return std::nullopt;
  }
  Groups groups;
  if (component.object) {
    AddTo(groups, *component.object);
  }
  for (const StatusNode& leaf : component.children) {
    if (leaf.object) {
      AddTo(groups, *leaf.object);
    }
  }
  if (!groups.empty()) {
    return Smallest(groups);
  }
  // Parts without a group: the first failure shows. Parts that were never read may have one.
  const bool known = component.coverage.total != 0 && component.coverage.read == component.coverage.total;
  return RedundancyMargin{known ? std::optional(0U) : std::nullopt, {}, 0, 0, 0};
}

}  // namespace

void TellMargins(StatusNode& root, const Configuration& configuration) {
  for (StatusNode& subsystem : root.children) {
    for (StatusNode& component : subsystem.children) {
      component.margin = MarginOf(component, configuration.FindSection(component.section));
    }
  }
}

}  // namespace emstatus::host
