#include "host/view/SinceTracker.h"

#include <utility>

namespace emstatus::host {

void SinceTracker::FollowNode(const StatusNode& node, WallTime now, Nodes& seen) const {
  const auto before = nodes_.find(node.id);
  Known known{node.status, begun_ ? std::optional(now) : std::nullopt};
  if (before != nodes_.end() && before->second.status == node.status) {
    known.since = before->second.since;
  }
  seen.emplace(node.id, known);
  for (const StatusNode& child : node.children) {
    FollowNode(child, now, seen);
  }
}

void SinceTracker::Follow(const StatusNode& root, WallTime now) {
  Nodes seen;
  FollowNode(root, now, seen);
  nodes_ = std::move(seen);
  begun_ = begun_.value_or(now);
}

void SinceTracker::TellNode(StatusNode& node) const {
  const auto known = nodes_.find(node.id);
  if (known != nodes_.end() && known->second.status == node.status) {
    node.since = known->second.since;
  }
  for (StatusNode& child : node.children) {
    TellNode(child);
  }
}

void SinceTracker::Tell(Report& report) const {
  report.begun = begun_;
  TellNode(report.root);
}

}  // namespace emstatus::host
