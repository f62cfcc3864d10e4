#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "config/ComponentDefinition.h"

namespace emstatus {

/// All that EM_STATUS.ini says. Read once and constant afterwards.
struct StatusConfiguration {
  /// Seconds.
  std::int32_t initialPollingDelay = 60;
  std::int32_t pollingRate = 60;
  std::int32_t advancedPollingRate = 15;
  /// Length of the probing phase, period of the check-inactive cycles and limit of the fail counts; 0: none.
  std::int32_t advancedPollingCycles = 30;
  /// What a mandatory component takes when its query fails.
  StatusValue queryFailStatus = NoStatus;
  /// Read for completeness: raw values without an entry go by the component's own map.
  StatusValue undefinedMappingStatus = NoStatus;

  std::map<StatusValue, std::string> statusNames;
  std::map<std::string, StatusValue, std::less<>> statusValues;
  std::string systemDesignation;
  /// In file order.
  std::vector<SubsystemDefinition> subsystems;
  /// Primary and alternative definitions by name.
  std::map<std::string, ComponentDefinition, std::less<>> components;

  /// The configured name of a status, "" when it has none.
  const char* StatusName(StatusValue status) const;

  /// The definition of that name, null when there is none.
  const ComponentDefinition* FindComponent(std::string_view name) const;

  /// The component at a position. Null when an index is out of range, which is traced, or when the name
  /// that is listed there is not defined.
  const ComponentDefinition* ComponentAt(std::uint32_t subsystem, std::uint32_t component) const;
};

}  // namespace emstatus
