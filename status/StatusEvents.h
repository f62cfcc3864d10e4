#pragma once

#include <cstdint>
#include <vector>

#include "config/StatusConfiguration.h"
#include "data/OwnedCommand.h"
#include "tree/ComponentStatus.h"

namespace emstatus {

class HostLink;

/// Where a component stands in the configuration.
struct ComponentPosition {
  std::uint32_t subsystem = 0;
  std::uint32_t component = 0;
};

/// The instance events of one scan, kept until the tree that they speak of is published. [polling thread]
class InstanceEvents {
 public:
  /// Queues the event that `instance` of the component listed as `componentName` changed.
  void Add(const StatusConfiguration& configuration, const std::string& componentName,
           const ComponentPosition& position, const ComponentInstance& instance);

  /// Sends the queued events in order.
  void Fire(HostLink& host);

 private:
  std::vector<OwnedCommand> queue_;
};

/// Sends the event that the system's status is now `status`.
void FireSystemStatus(HostLink& host, StatusValue status);

}  // namespace emstatus
