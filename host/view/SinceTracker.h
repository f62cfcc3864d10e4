#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "host/view/Report.h"

namespace emstatus::host {

/// Remembers since when each node has its status, from scan to scan. [main thread]
class SinceTracker {
 public:
  /// A scan has left this tree.
  void Follow(const StatusNode& root, WallTime now);

  /// Fills in what is known by now: of a node that was so from the first scan on, nothing.
  void Tell(Report& report) const;

 private:
  struct Known {
    std::uint32_t status = 0;
    std::optional<WallTime> since;
  };
  using Nodes = std::map<std::string, Known, std::less<>>;

  void FollowNode(const StatusNode& node, WallTime now, Nodes& seen) const;
  void TellNode(StatusNode& node) const;

  Nodes nodes_;
  std::optional<WallTime> begun_;
};

}  // namespace emstatus::host
