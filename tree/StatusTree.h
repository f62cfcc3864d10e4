#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/RecursiveLock.h"
#include "platform/ThreadSafety.h"
#include "tree/ComponentStatus.h"
#include "tree/StatusTreeNode.h"

namespace emstatus {

using NodeMap = std::map<std::string, StatusTreeNode, std::less<>>;

/// All that one scan found. Values in it agree with each other.
struct StatusSnapshot {
  NodeMap nodes;
  /// By the name of the definition, primary or alternative.
  std::map<std::string, ComponentStatus, std::less<>> components;
  /// By the name of the subsystem; limited to NoStatus, OK, Warning and Error.
  std::map<std::string, StatusValue, std::less<>> subsystems;
  StatusValue system = NoStatus;

  /// The node of that id, null when it is missing or was never filled.
  const StatusTreeNode* FindNode(std::string_view id) const;
};

/// The picture of the system's health that the scan publishes and requests read. [any thread]
class StatusTree {
 public:
  /// What the last complete scan found; unchanged for as long as it is held. Never null.
  std::shared_ptr<const StatusSnapshot> Current() const;

  /// Puts a complete scan's result in the place of the one before, at once for every reader.
  void Publish(StatusSnapshot snapshot);

  /// Makes sure that there is a node under `id`, adding one that was never filled.
  void EnsureNode(std::string_view id);

 private:
  mutable RecursiveLock lock_;
  std::shared_ptr<const StatusSnapshot> current_ EM_GUARDED_BY(lock_) = std::make_shared<StatusSnapshot>();
};

}  // namespace emstatus
