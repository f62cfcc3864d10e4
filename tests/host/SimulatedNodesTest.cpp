#include <gtest/gtest.h>

#include <set>

#include "host/view/NodeNames.h"
#include "host/view/SimulatedNodes.h"
#include "host/view/SimulationText.h"
#include "host/view/StatusChange.h"
#include "host/view/TreeJson.h"
#include "host/view/TreePrinter.h"

namespace emstatus::host {
namespace {

using Names = std::set<std::string, std::less<>>;

/// The subsystem "Use" has a component of its own name, and two components count instances in one cabinet.
constexpr const char* kTree = R"({"Id":"root","Desig":"Server","Status":3,"Children":[
 {"Id":"Cooling","Desig":"Cooling","Status":3,"Children":[
  {"Id":"Fans","Desig":"Fans","Status":3,"Children":[
   {"Id":"000-00","Desig":"Fan0","Status":3},{"Id":"000-01","Desig":"Rear","Status":1}]},
  {"Id":"Pumps","Desig":"Pumps","Status":1,"Children":[
   {"Id":"Pumps/000-00","Desig":"Pump0","Status":1},{"Id":"002-12","Desig":"Pump12-2","Status":1}]}]},
 {"Id":"Use","Desig":"Use","Status":2,"Children":[{"Id":"Use/Use","Desig":"In use","Status":2}]}]})";

std::string InstanceId(const std::string& subsystem, const std::string& component, std::uint32_t index,
                       std::uint32_t cabinet) {
  EXPECT_EQ(subsystem, "Cooling");
  return component.substr(0, component.size() - 1) + std::to_string(index) +
         (cabinet == 0 ? "" : "-" + std::to_string(cabinet));
}

void CollectMarked(const StatusNode& node, Names& marked) {
  if (node.simulated) {
    marked.insert(node.id);
  }
  for (const StatusNode& child : node.children) {
    CollectMarked(child, marked);
  }
}

TEST(SimulatedNodes, AreThoseThatTheModuleForces) {
  const struct {
    const char* name;
    Names marked;
  } rows[] = {
      {"Fan0", {"000-00"}},
      {"Pump0", {"Pumps/000-00"}},
      {"Pump12-2", {"002-12"}},
      {"Use", {"Use/Use"}},
      {"Fans", {}},
      {"Rear", {}},
      {"000-00", {}},
      {"Cooling", {}},
      {"Pumps/000-00", {}},
      {"Fan2", {}},
      {"Use/Use", {}},
  };
  for (const auto& row : rows) {
    StatusNode root = ReadStatusTree(kTree);
    SimulationState simulation;
    simulation.parts[row.name] = {3, -1, -1};
    NameNodes(root, InstanceId);
    MarkSimulated(root, simulation);
    Names marked;
    CollectMarked(root, marked);
    EXPECT_EQ(marked, row.marked) << row.name;
    EXPECT_EQ(simulation.absent.size(), row.marked.empty() ? 1U : 0U) << row.name;
  }
}

TEST(SimulatedNodes, AreMarkedInAllThatIsShown) {
  const StatusWords words;
  Report report;
  report.root = ReadStatusTree(kTree);
  report.systemStatus = 3;
  SimulationState& simulation = report.simulation;
  simulation.parts = {{"Fan0", {3, -1, -1}}, {"Fan7", {2, -1, 0}}, {"Use", {0, 12, 1}}};
  simulation.kept = {"Use"};
  simulation.byHand = true;
  NameNodes(report.root, InstanceId);
  MarkSimulated(report.root, simulation);

  const std::string text = TreeText(report, words, false);
  EXPECT_NE(text.find("      Fan0      Error (simulated)\n"), std::string::npos) << text;
  EXPECT_NE(text.find("      Rear      OK\n"), std::string::npos) << text;
  EXPECT_TRUE(
      text.ends_with("\nSimulated without end, by a file written by hand: Fan0 Error, Fan7 Warning "
                     "(not CSS) (not in the tree), Use object status 12 (CSS) (still, from before)\n"))
      << text;

  const auto json = TreeJson(report, words);
  EXPECT_EQ(json["Tree"]["Children"][0]["Children"][0]["Children"][0]["Simulated"], true);
  EXPECT_FALSE(json["Tree"]["Children"][0]["Children"][0]["Children"][1].contains("Simulated"));
  EXPECT_EQ(
      json["Simulation"].dump(),
      R"({"Until":null,"ByHand":true,"Parts":[)"
      R"({"Name":"Fan0","Status":3,"StatusName":"Error","Present":true,"FromBefore":false},)"
      R"({"Name":"Fan7","Status":2,"StatusName":"Warning","IsCss":0,"Present":false,"FromBefore":false},)"
      R"({"Name":"Use","ObjStatus":12,"IsCss":1,"Present":true,"FromBefore":true}]})");

  StatusChange change;
  change.simulated = true;
  change.now = 3;
  EXPECT_TRUE(ChangeText(change, words, false).ends_with("System: NoStatus -> Error (parts are simulated)"));
  EXPECT_EQ(ChangeJson(change, words)["SimulatedParts"], true);
  change.what = StatusChange::What::Instance;
  EXPECT_TRUE(ChangeText(change, words, false).ends_with(": NoStatus -> Error (simulated)"));
  EXPECT_EQ(ChangeJson(change, words)["Simulated"], true);

  report.simulation = {};
  EXPECT_FALSE(TreeJson(report, words).contains("Simulation"));
  EXPECT_EQ(SimulationJson({}, words), nullptr);
}

}  // namespace
}  // namespace emstatus::host
