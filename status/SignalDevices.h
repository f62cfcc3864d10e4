#pragma once

#include <cstdint>

#include "tree/StatusTreeNode.h"

namespace emstatus {

class HostLink;

/// The host's status signals, of which the global error LED (GEL) is driven. [polling thread]
class SignalDevices {
 public:
  explicit SignalDevices(HostLink& host) : host_(host) {}

  /// Asks the host for its signals. What was found earlier stays until the host tells otherwise.
  void Find();

  /// Shows the system node's status on the global error LED, if there is one.
  void Show(const StatusTreeNode& root);

 private:
  /// No signal has this index.
  static constexpr std::int32_t kNoObject = 0xFFFF;

  void FindPurpose(std::int32_t object);

  HostLink& host_;
  std::int32_t gelIndex_ = kNoObject;
};

}  // namespace emstatus
