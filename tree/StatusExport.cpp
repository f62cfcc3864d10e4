#include "tree/StatusExport.h"

#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

void AddNodeMembers(const StatusTreeNode& node, CommandValue& object) {
  AddMember(object, "Id", OwnedValue::Reference(node.id));
  AddMember(object, "Desig", OwnedValue::Reference(node.designation));
  AddMember(object, "Status", OwnedValue::UInt32(node.status));
  AddMember(object, "CssStatus", OwnedValue::UInt32(node.cssStatus));
  AddMember(object, "NoCssStatus", OwnedValue::UInt32(node.nonCssStatus));
  AddMember(object, "IsCss", OwnedValue::UInt32(node.isCSS));
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> status = %d", node.status);
  if (node.children.empty()) AddMember(object, "ObjStatus", OwnedValue::UInt32(node.objectStatus));
  if (!node.associationKey.empty()) AddMember(object, "Assoc", OwnedValue::Reference(node.associationKey));
}

/// Builds the node `id` into `object`. False, and nothing added, when it is missing.
bool BuildNode(StatusTree& tree, const StatusSnapshot& snapshot, const std::string& id,
               CommandValue& object) {
  EM_TRACE(3, "\nEM_STATUS (REQUEST) :   get status tree recursively for node \"%s\"...", id.c_str());
  const StatusTreeNode* node = snapshot.FindNode(id);
  if (node == nullptr) {
    tree.EnsureNode(id);
    return false;
  }
  AddNodeMembers(*node, object);
  if (node->children.empty()) return true;
  OwnedValue children = OwnedValue::Array();
  for (const std::string& childId : node->children) {
    OwnedValue child = OwnedValue::Object();
    BuildNode(tree, snapshot, childId, child);
    Append(children, std::move(child));
  }
  AddMember(object, "Children", std::move(children));
  return true;
}

}  // namespace

std::optional<OwnedValue> ExportStatusTree(StatusTree& tree, const StatusSnapshot& snapshot) {
  OwnedValue document = OwnedValue::Object();
  AddMember(document, "SystemStatusTree", OwnedValue::Object());
  AddMember(document, "Version", OwnedValue::UInt32(1));
  if (!BuildNode(tree, snapshot, kRootId, document)) return std::nullopt;
  return document;
}

}  // namespace emstatus
