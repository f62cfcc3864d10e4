#include "host/view/StatusNode.h"

#include <algorithm>
#include <stdexcept>

#include "host/machine/Utf8.h"
#include "host/view/AssociationKey.h"

namespace emstatus::host {
namespace {

constexpr int kDeepest = 64;

StatusNode ReadNode(const nlohmann::json& object, int depth) {
  if (!object.is_object() || depth > kDeepest) {
    throw std::runtime_error("the module's status tree cannot be read: a node is no object");
  }
  StatusNode node;
  node.id = object.value("Id", "");
  node.designation = object.value("Desig", "");
  node.status = object.value("Status", 0U);
  node.cssStatus = object.value("CssStatus", 0U);
  node.nonCssStatus = object.value("NoCssStatus", 0U);
  node.isCss = object.value("IsCss", 0U) != 0;
  if (object.contains("ObjStatus")) {
    node.objectStatus = std::uint32_t(object["ObjStatus"].get<std::int64_t>());
  }
  node.associationKey = object.value("Assoc", "");
  for (const nlohmann::json& child : object.value("Children", nlohmann::json::array())) {
    node.children.push_back(ReadNode(child, depth + 1));
  }
  return node;
}

/// Whether the designation is no more than the instance's number behind the component's word.
bool IsNumberOnly(const StatusNode& node) {
  const ObjectAddress& address = node.object->address;
  const std::string index = std::to_string(address.index);
  return node.designation.empty() || node.designation.ends_with(index) ||
         node.designation.ends_with(index + "-" + std::to_string(address.cabinet));
}

Coverage CoverageOfLeaf(const StatusNode& leaf) {
  if (!leaf.object) {
    // One whose object is not there at all, or one that stands for none.
    return {0, ObjectOfKey(leaf.associationKey, 0) ? 1U : 0U, {}};
  }
  const Quality quality = leaf.object->reading.quality;
  const bool read = quality == Quality::Good;
  return {read ? 1U : 0U, quality == Quality::Inactive ? 0U : 1U,
          read ? leaf.object->age : std::chrono::milliseconds(0)};
}

const StatusNode* FindChild(const StatusNode& parent, std::string_view designation) {
  const auto found = std::ranges::find(parent.children, designation, &StatusNode::designation);
  return found == parent.children.end() ? nullptr : &*found;
}

}  // namespace

StatusNode ReadStatusTree(std::string_view text) {
  try {
    return ReadNode(nlohmann::json::parse(CleanUtf8(text)), 0);
  } catch (const nlohmann::json::exception& error) {
    throw std::runtime_error(std::string("the module's status tree cannot be read: ") + error.what());
  }
}

void AttachObjects(StatusNode& node, const Machine& machine, std::uint32_t ownCabinet) {
  if (const auto address = ObjectOfKey(node.associationKey, ownCabinet)) {
    node.object = machine.Find(*address);
  }
  for (StatusNode& child : node.children) {
    AttachObjects(child, machine, ownCabinet);
  }
}

void CountCoverage(StatusNode& node) {
  if (node.children.empty()) {
    if (node.coverage == Coverage{}) {
      node.coverage = CoverageOfLeaf(node);
    }
    return;
  }
  node.coverage = {};
  for (StatusNode& child : node.children) {
    CountCoverage(child);
    node.coverage.read += child.coverage.read;
    node.coverage.total += child.coverage.total;
    node.coverage.oldest = std::max(node.coverage.oldest, child.coverage.oldest);
  }
}

bool IsStale(const StatusNode& leaf) {
  if (leaf.simulated || !leaf.object || leaf.object->reading.quality == Quality::Good) {
    return false;
  }
  const auto question = QuestionOfKey(leaf.associationKey);
  if (question != Question::State && question != Question::StateAbove && question != Question::StateBelow) {
    return false;
  }
  return leaf.objectStatus != std::uint32_t(RawStateOf(leaf.object->reading));
}

void DropAbsent(StatusNode& root) {
  std::erase_if(root.children,
                [](const StatusNode& node) { return node.children.empty() && node.status == 0; });
}

std::string NodeName(const StatusNode& node) {
  if (node.object && !node.object->reading.name.empty() && IsNumberOnly(node)) {
    return CleanLine(node.object->reading.name);
  }
  return CleanLine(node.designation.empty() ? node.id : node.designation);
}

const StatusNode* FindInstance(const StatusNode& root, std::string_view subsystem, std::string_view component,
                               std::uint32_t index, std::uint32_t cabinet) {
  const StatusNode* parent = FindChild(root, subsystem);
  parent = parent == nullptr ? nullptr : FindChild(*parent, component);
  if (parent == nullptr) {
    return nullptr;
  }
  const auto found = std::ranges::find_if(parent->children, [&](const StatusNode& node) {
    return node.object && node.object->address.index == index && node.object->address.cabinet == cabinet;
  });
  return found == parent->children.end() ? nullptr : &*found;
}

}  // namespace emstatus::host
