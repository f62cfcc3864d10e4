#include "host/machine/TimeText.h"
#include "host/view/Causes.h"
#include "host/view/Explanation.h"
#include "host/view/KnowledgeText.h"
#include "host/view/SimulationText.h"
#include "host/view/TreeJson.h"

namespace emstatus::host {
namespace {

using nlohmann::ordered_json;

ordered_json PathJson(const NodePath& path, const StatusWords& words) {
  ordered_json json = ordered_json::array();
  for (const StatusNode* node : path) {
    json.push_back({{"Id", node->id},
                    {"Desig", NodeName(*node)},
                    {"Status", node->status},
                    {"StatusName", words.Of(node->status)}});
  }
  return json;
}

/// All of the node but its children, behind the path to it.
ordered_json ExplainedJson(const NodePath& path, const Report& report, const StatusWords& words) {
  ordered_json json{{"Path", PathJson(path, words)}};
  json.update(NodeMembersJson(*path.back(), words));
  const std::string word = RawStateWord(*path.back());
  if (!word.empty()) {
    json["RawWord"] = word;
  }
  if (IsCovered(path)) {
    json["Covered"] = true;
  }
  json["CountsAs"] = StatusThatCounts(path, report);
  return json;
}

}  // namespace

ordered_json ExplanationJson(const NodePath& node, const Report& report, const StatusWords& words) {
  ordered_json json;
  json["Version"] = 1;
  json["Time"] = UtcText(report.time);
  if (report.begun) {
    json["Begun"] = UtcText(*report.begun);
  }
  json["SystemStatus"] = report.systemStatus;
  json["SystemStatusName"] = words.Of(report.systemStatus);
  if (report.simulation.InForce()) {
    json["Simulation"] = SimulationJson(report.simulation, words);
  }
  json["Node"] = ExplainedJson(node, report, words);
  json["Causes"] = ordered_json::array();
  const auto causes = CausesOf(node);
  for (const NodePath& cause : causes) {
    json["Causes"].push_back(ExplainedJson(cause, report, words));
  }
  if (causes.empty()) {
    json["Evidence"] = ordered_json::array();
    for (const StatusNode& child : node.back()->children) {
      json["Evidence"].push_back(NodeMembersJson(child, words));
    }
  }
  return json;
}

}  // namespace emstatus::host
