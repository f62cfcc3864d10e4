#include <utility>

#include "data/Command.h"
#include "platform/CDebugClient.h"
#include "tree/RequestHandler.h"
#include "tree/StatusExport.h"

namespace emstatus {

const StatusTreeNode* RequestHandler::FindNode(Request& request) {
  std::string id(TextUpToZero(Data(request.command)));
  if (id.empty()) id = kRootId;
  const StatusTreeNode* node = request.scan->FindNode(id);
  if (node == nullptr) {
    EM_TRACE(2, "\nEM_STATUS (REQUEST) : ## ERROR! No status tree node found for node id \"%s\"", id.c_str());
    SetStatus(request.command, answer::kBadParameter);
  }
  return node;
}

void RequestHandler::NodeChildCount(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" has %d children", node->id.c_str(),
           static_cast<int>(node->children.size()));
  SetDataWord(request.command, static_cast<std::uint32_t>(node->children.size()));
}

void RequestHandler::NodeChild(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  if (request.object >= node->children.size()) {
    SetStatus(request.command, answer::kBadParameter);
    return;
  }
  const std::string& child = node->children[request.object];
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" child[%d] = \"%s\"", node->id.c_str(),
           static_cast<int>(request.object), child.c_str());
  SetDataString(request.command, child);
}

void RequestHandler::NodeParent(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" parent = \"%s\"", node->id.c_str(),
           node->parentId.c_str());
  SetDataString(request.command, node->parentId);
}

void RequestHandler::NodeStatus(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" status = %d", node->id.c_str(), node->status);
  SetDataByte(request.command, node->status);
}

void RequestHandler::NodeCssStatus(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" non-CSS status = %d, CSS status = %d",
           node->id.c_str(), node->nonCssStatus, node->cssStatus);
  const std::uint8_t bytes[] = {node->nonCssStatus, node->cssStatus};
  SetDataRaw(request.command, bytes);
}

void RequestHandler::NodeDesignation(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" designation = \"%s\"", node->id.c_str(),
           node->designation.c_str());
  SetDataString(request.command, node->designation);
}

void RequestHandler::NodeObjectStatus(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" object status = %d", node->id.c_str(),
           static_cast<int>(node->objectStatus));
  SetDataWord(request.command, node->objectStatus);
}

void RequestHandler::NodeAssociationKey(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" assoctiation key = \"%s\"", node->id.c_str(),
           node->associationKey.c_str());
  SetDataString(request.command, node->associationKey);
}

void RequestHandler::NodeIsCss(Request& request) const {
  const StatusTreeNode* node = FindNode(request);
  if (node == nullptr) return;
  EM_TRACE(2, "\nEM_STATUS (REQUEST) : Status tree node \"%s\" is CSS = %d", node->id.c_str(), node->isCSS);
  SetDataBoolean(request.command, node->isCSS);
}

void RequestHandler::WholeTree(Request& request) const {
  EM_TRACE(3, "\nEM_STATUS (REQUEST) : Get complete system status tree");
  auto text = ExportStatusTree(tree_, *request.scan);
  CommandValue* command = EnsureCurrentCommand(request.command);
  if (!text || command == nullptr) return;
  RemoveMember(*command, "DA");
  SetData(request.command, std::move(*text));
}

}  // namespace emstatus
