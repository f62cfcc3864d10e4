#include "status/WorkingTree.h"

#include <utility>

#include "platform/CDebugClient.h"

namespace emstatus {

WorkingTree::WorkingTree(NodeMap published) : nodes_(std::move(published)) {
  for (auto& [id, node] : nodes_) {
    statusBefore_.emplace_hint(statusBefore_.end(), id, node.status);
    node.ClearStates();
  }
}

StatusTreeNode& WorkingTree::Root() {
  StatusTreeNode& root = nodes_[kRootId];
  root.id = kRootId;
  return root;
}

StatusTreeNode& WorkingTree::Subsystem(const std::string& name) {
  StatusTreeNode& root = Root();
  const std::string id = IdOf(root, name);
  if (StatusTreeNode* node = Find(id)) return *node;
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> subsystem \"%s\" not yet existing in status tree - create it",
           name.c_str());
  return Create(root, id);
}

StatusTreeNode& WorkingTree::Component(StatusTreeNode& parent, const std::string& name,
                                       const std::string& parentName) {
  const std::string id = IdOf(parent, name);
  if (StatusTreeNode* node = Find(id)) return *node;
  EM_TRACE(
      3,
      "\nEM_STATUS (QUERY)   : -> component \"%s\" not yet existing in status tree - create it (under parent \"%s\")",
      name.c_str(), parentName.c_str());
  return Create(parent, id);
}

StatusTreeNode& WorkingTree::Instance(StatusTreeNode& parent, const std::string& key,
                                      const std::string& parentName) {
  const std::string id = IdOf(parent, key);
  if (StatusTreeNode* node = Find(id)) return *node;
  EM_TRACE(
      3,
      "\nEM_STATUS (QUERY)   : -> instance \"%s\" not yet existing in status tree - create it (under parent \"%s\")",
      key.c_str(), parentName.c_str());
  return Create(parent, id);
}

StatusValue WorkingTree::StatusBefore(const StatusTreeNode& node) const {
  const auto before = statusBefore_.find(node.id);
  return before == statusBefore_.end() ? NoStatus : before->second;
}

std::string WorkingTree::IdOf(const StatusTreeNode& parent, const std::string& name) const {
  std::string id = name;
  for (auto taken = nodes_.find(id);
       taken != nodes_.end() && !taken->second.id.empty() && taken->second.parentId != parent.id;
       taken = nodes_.find(id)) {
    id.insert(0, parent.id + '/');
  }
  return id;
}

StatusTreeNode* WorkingTree::Find(const std::string& id) {
  const auto node = nodes_.find(id);
  return node == nodes_.end() || node->second.id.empty() ? nullptr : &node->second;
}

StatusTreeNode& WorkingTree::Create(StatusTreeNode& parent, const std::string& id) {
  StatusTreeNode& node = nodes_[id];
  node = {};
  node.id = id;
  node.parentId = parent.id;
  parent.children.push_back(id);
  return node;
}

}  // namespace emstatus
