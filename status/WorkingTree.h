#pragma once

#include <map>
#include <string>
#include <string_view>

#include "tree/StatusTree.h"

namespace emstatus {

/// The copy of the tree that a scan fills while requests go on reading the published one. Every node starts
/// with its statuses cleared; nodes are found or made by name under their parent and never removed.
/// [polling thread]
class WorkingTree {
 public:
  explicit WorkingTree(NodeMap published);

  StatusTreeNode& Root();
  StatusTreeNode& Subsystem(const std::string& name);
  /// `parentName` is how the parent is named in traces.
  StatusTreeNode& Component(StatusTreeNode& parent, const std::string& name, const std::string& parentName);
  StatusTreeNode& Instance(StatusTreeNode& parent, const std::string& key, const std::string& parentName);

  /// The status that the node held before this scan, NoStatus for one that the scan made.
  StatusValue StatusBefore(const StatusTreeNode& node) const;

  NodeMap& Nodes() { return nodes_; }

 private:
  /// The id of the node `name` under `parent`: the name or, when a node with another parent has it already,
  /// the parent's id, "/" and the name.
  std::string IdOf(const StatusTreeNode& parent, const std::string& name) const;
  StatusTreeNode* Find(const std::string& id);
  StatusTreeNode& Create(StatusTreeNode& parent, const std::string& id);

  NodeMap nodes_;
  std::map<std::string, StatusValue, std::less<>> statusBefore_;
};

}  // namespace emstatus
