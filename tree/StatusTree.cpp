#include "tree/StatusTree.h"

#include <utility>

namespace emstatus {

const StatusTreeNode* StatusSnapshot::FindNode(std::string_view id) const {
  const auto node = nodes.find(id);
  return node == nodes.end() || node->second.id.empty() ? nullptr : &node->second;
}

std::shared_ptr<const StatusSnapshot> StatusTree::Current() const {
  const RecursiveGuard guard(lock_);
  return current_;
}

void StatusTree::Publish(StatusSnapshot snapshot) {
  std::shared_ptr<const StatusSnapshot> next = std::make_shared<StatusSnapshot>(std::move(snapshot));
  // What is replaced is freed after the lock is given back.
  const RecursiveGuard guard(lock_);
  current_.swap(next);
}

void StatusTree::EnsureNode(std::string_view id) {
  const RecursiveGuard guard(lock_);
  if (current_->nodes.contains(id)) return;
  auto extended = std::make_shared<StatusSnapshot>(*current_);
  extended->nodes.try_emplace(std::string(id));
  current_ = std::move(extended);
}

}  // namespace emstatus
