#pragma once

#include <emstatus/HostCommand.h>

#include "host/machine/Request.h"

namespace emstatus::host {

/// A command that the host sends to the module: one command object, released with this.
class OwnedCommand {
 public:
  /// With "OC", "OE", "OI", "CA", and "DA" when the request has data.
  explicit OwnedCommand(const Request& request);
  /// The same with "ST".
  OwnedCommand(const Request& request, std::uint32_t status);
  OwnedCommand(const OwnedCommand&) = delete;
  OwnedCommand& operator=(const OwnedCommand&) = delete;
  ~OwnedCommand();

  HostCommand& Get() { return command_; }

 private:
  HostCommand command_;
};

}  // namespace emstatus::host
