#pragma once

#include <atomic>

#include <emstatus/HostCommand.h>

#include "platform/EventHandle.h"

namespace emstatus {

/// Learns from the replies and events that pass the host's command interface that the hardware's status may
/// have changed, and wakes the polling thread then. [any thread]
class ReplyHandler {
 public:
  ReplyHandler(EventHandle& wakeUp, std::atomic<bool>& raidRefresh)
      : wakeUp_(wakeUp), raidRefresh_(raidRefresh) {}

  /// Reads `command`, which stays as it is.
  void OnReply(const HostCommand& command) const;

 private:
  void OnConfigurationSpaceAccess(const HostCommand& command) const;
  void WakePolling() const;

  EventHandle& wakeUp_;
  std::atomic<bool>& raidRefresh_;
};

}  // namespace emstatus
