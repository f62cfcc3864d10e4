#include "host/view/Causes.h"

#include <algorithm>
#include <utility>

#include "host/machine/Numbering.h"

namespace emstatus::host {
namespace {

constexpr std::uint32_t kGoodStatus = 1;
constexpr std::uint32_t kDegraded = 2;
constexpr std::uint32_t kFailed = 3;
constexpr std::size_t kSubsystemDepth = 1;

/// How bad a leaf is; 0: nothing is wrong with it.
int Badness(const NodePath& leaf) {
  const StatusNode& node = *leaf.back();
  if (node.status == kFailed) {
    return IsCovered(leaf) ? 4 : 5;
  }
  if (node.status == kDegraded) {
    return 3;
  }
  if (node.status == 0) {
    return 2;
  }
  return node.coverage.read < node.coverage.total ? 1 : 0;
}

void CollectLeaves(NodePath& path, std::vector<std::pair<int, NodePath>>& leaves) {
  const StatusNode& node = *path.back();
  if (node.children.empty()) {
    if (const int badness = Badness(path); badness != 0) {
      leaves.emplace_back(badness, path);
    }
    return;
  }
  for (const StatusNode& child : node.children) {
    path.push_back(&child);
    CollectLeaves(path, leaves);
    path.pop_back();
  }
}

bool IsLeafCovered(const NodePath& leaf) {
  const auto& object = leaf.back()->object;
  const StatusNode& component = leaf.size() > 3 ? *leaf[leaf.size() - 2] : *leaf.back();
  return object && component.margin && RedundancyStateOf(object->reading) == RedundancyState::Reduced;
}

bool AreAllCovered(const NodePath& component) {
  return std::ranges::all_of(component.back()->children, [&](const StatusNode& leaf) {
    NodePath path = component;
    path.push_back(&leaf);
    return leaf.status != kFailed || IsLeafCovered(path);
  });
}

}  // namespace

std::vector<NodePath> CausesOf(const NodePath& node) {
  std::vector<std::pair<int, NodePath>> leaves;
  NodePath path = node;
  CollectLeaves(path, leaves);
  std::ranges::stable_sort(leaves, std::ranges::greater{}, &std::pair<int, NodePath>::first);
  std::vector<NodePath> causes;
  for (auto& [badness, leaf] : leaves) {
    causes.push_back(std::move(leaf));
  }
  return causes;
}

bool IsCovered(const NodePath& node) {
  if (node.back()->status != kFailed || node.size() <= kSubsystemDepth + 1) {
    return false;
  }
  if (node[kSubsystemDepth]->status != kFailed) {
    return true;
  }
  return node.back()->children.empty() ? IsLeafCovered(node) : AreAllCovered(node);
}

std::uint32_t StatusThatCounts(const NodePath& node, const Report& report) {
  if (node.size() == 1) {
    return report.systemStatus;
  }
  const std::uint32_t status = IsCovered(node) ? kDegraded : node.back()->status;
  const bool bothCompare = status >= kGoodStatus && status <= kFailed && report.systemStatus >= kGoodStatus &&
                           report.systemStatus <= kFailed;
  return bothCompare ? std::min(status, report.systemStatus) : status;
}

}  // namespace emstatus::host
