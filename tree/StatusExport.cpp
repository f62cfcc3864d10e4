#include "tree/StatusExport.h"

#include <string_view>

#include "data/JsonWriter.h"
#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

/// Writes nodes straight as text: building a document of them first would cost more than the writing.
class TreeWriter {
 public:
  TreeWriter(StatusTree& tree, const NodeMap& nodes) : tree_(tree), nodes_(nodes), last_(nodes.end()) {}

  /// Writes the members of the node `id`, behind `before`. False, and nothing written, when it is missing.
  bool WriteNode(const std::string& id, std::string_view before) {
    EM_TRACE(3, "\nEM_STATUS (REQUEST) :   get status tree recursively for node \"%s\"...", id.c_str());
    const StatusTreeNode* node = Find(id);
    if (node == nullptr) {
      tree_.EnsureNode(id);
      return false;
    }
    json_.WriteJson(before);
    WriteMembers(*node);
    if (!node->children.empty()) WriteChildren(*node);
    return true;
  }

  OwnedValue Finish() {
    json_.WriteJson("}");
    return json_.TakeText();
  }

 private:
  void WriteMembers(const StatusTreeNode& node) {
    json_.WriteJson(R"("Id":)");
    json_.WriteText(node.id);
    json_.WriteJson(R"(,"Desig":)");
    json_.WriteText(node.designation);
    json_.WriteJson(R"(,"Status":)");
    json_.WriteNumber(node.status);
    json_.WriteJson(R"(,"CssStatus":)");
    json_.WriteNumber(node.cssStatus);
    json_.WriteJson(R"(,"NoCssStatus":)");
    json_.WriteNumber(node.nonCssStatus);
    json_.WriteJson(R"(,"IsCss":)");
    json_.WriteNumber(node.isCSS);
    EM_TRACE(3, "\nEM_STATUS (REQUEST) :   -> status = %d", node.status);
    if (node.children.empty()) {
      json_.WriteJson(R"(,"ObjStatus":)");
      json_.WriteNumber(node.objectStatus);
    }
    if (!node.associationKey.empty()) {
      json_.WriteJson(R"(,"Assoc":)");
      json_.WriteText(node.associationKey);
    }
  }

  void WriteChildren(const StatusTreeNode& node) {
    std::string_view before = R"(,"Children":[{)";
    for (const std::string& id : node.children) {
      json_.WriteJson(before);
      WriteNode(id, "");
      before = "},{";
    }
    json_.WriteJson("}]");
  }

  /// The ids of neighbours are neighbours in the map more often than not.
  const StatusTreeNode* Find(const std::string& id) {
    if (last_ != nodes_.end()) ++last_;
    if (last_ == nodes_.end() || last_->first != id) last_ = nodes_.find(id);
    return last_ == nodes_.end() || last_->second.id.empty() ? nullptr : &last_->second;
  }

  StatusTree& tree_;
  const NodeMap& nodes_;
  /// Found last.
  NodeMap::const_iterator last_;
  JsonWriter json_;
};

}  // namespace

std::optional<OwnedValue> ExportStatusTree(StatusTree& tree, const StatusSnapshot& snapshot) {
  TreeWriter writer(tree, snapshot.nodes);
  if (!writer.WriteNode(kRootId, R"({"SystemStatusTree":{},"Version":1,)")) return std::nullopt;
  return writer.Finish();
}

}  // namespace emstatus
