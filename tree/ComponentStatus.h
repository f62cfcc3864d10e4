#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "config/StatusValue.h"

namespace emstatus {

/// A CSS property that the host has not told yet.
inline constexpr std::uint32_t kCssUnknown = 0xFFFFFFFF;

/// One instance of a component, as the last query that reached it found it.
struct ComponentInstance {
  /// Base name, index and, where several cabinets are asked, cabinet.
  std::string instanceId;
  std::uint32_t cabinet = 0;
  std::uint32_t index = 0;
  /// The host's name for it; empty until the host gives one.
  std::string designation;
  StatusValue status = NoStatus;
  std::uint32_t rawValue = 0;
  /// 0, 1 (the customer can service it) or kCssUnknown.
  std::uint32_t css = kCssUnknown;

  const std::string& DisplayText() const { return designation.empty() ? instanceId : designation; }
};

/// "%03u-%02u" of the cabinet and the instance's index: key of an instance in its component.
std::string InstanceKey(std::uint32_t cabinet, std::uint32_t index);

/// What the queries of a component definition found.
struct ComponentStatus {
  StatusValue status = NoStatus;
  /// Raw value behind `status`, -1 before there is one.
  std::int32_t rawValue = -1;
  /// The map entry behind `status`.
  std::string statusText = "N/A";
  /// Fixed, or the host's answer; empty until the host gives one.
  std::string displayName;
  std::map<std::string, ComponentInstance, std::less<>> instances;
};

}  // namespace emstatus
