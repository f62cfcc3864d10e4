#pragma once

#include <cstdint>

#include <emstatus/HostCommand.h>

namespace emstatus {

/// The way to the host. No lock of the module is held while it is called. [any thread]
class HostLink {
 public:
  virtual ~HostLink() = default;

  /// Sends `command` and waits up to 5000 ms for the answer, which is written into it. Without a host its
  /// "ST" becomes 6; a missing "CA" becomes the server's cabinet.
  virtual void SendRequest(HostCommand& command) = 0;

  /// Sends an event; a missing "ST" becomes 0. Nothing without a host.
  virtual void SendEvent(HostCommand& command) = 0;

  /// The number of the server's own cabinet.
  virtual std::uint32_t ServerCabinet() const = 0;
};

}  // namespace emstatus
