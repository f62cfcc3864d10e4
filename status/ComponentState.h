#pragma once

#include <cstdint>

#include "config/ComponentDefinition.h"
#include "tree/ComponentStatus.h"

namespace emstatus {

/// Everything the queries of one component definition remember from scan to scan.
struct ComponentState {
  explicit ComponentState(const ComponentDefinition& component)
      : definition(&component), active(component.enabled) {
    found.displayName = component.displayName;
  }

  const ComponentDefinition* definition;
  /// What is published with the tree.
  ComponentStatus found;
  /// An inactive component is asked in check-inactive cycles only.
  bool active;
  /// Queries without any answer since the last that had one.
  std::uint64_t failCount = 0;
  /// The number of instances comes from the host.
  bool hasInstances = false;
  /// CSS property of a component without instances: 0, 1 or kCssUnknown.
  std::uint32_t css = kCssUnknown;
};

}  // namespace emstatus
