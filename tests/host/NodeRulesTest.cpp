#include <gtest/gtest.h>

#include "host/machine/ScenarioMachine.h"
#include "host/view/NodeNames.h"
#include "host/view/NodeRules.h"

namespace emstatus::host {
namespace {

constexpr const char* kRulesConfiguration = R"([Info]
Filename=EM_STATUS.ini
LayoutVersion=4
[Configuration]
StatusValueQueryFail=2
[StatusMapping]
OK=1
Warning=2
Error=3
[System]
Subsystems=S
[Subsystem.S]
DisplayName=S
Components=Links Zone Four Use
[Component.Links]
DisplayName=Links
StatusRequest=<CMD Context="TRIQ" OC="0701" OE="0002"/>
NrInstancesRequest=<CMD Context="TRIQ" OC="0701" OE="0001"/>
RedundancyRequest=<CMD Context="TRIQ" OC="0701" OE="0007"/>
Status.Good=OK 0
Status.Failed=Error 2
Redundancy.Reduced=1 2
[Component.Zone]
DisplayName=Zone
StatusRequest=<CMD Context="TRIQ" OC="0101" OE="0002"/>
NrInstancesRequest=<CMD Context="TRIQ" OC="0101" OE="0001"/>
Status.Good=OK 0
[Component.Zone.alt]
DisplayName=Zone
StatusRequest=<CMD Context="TRIQ" OC="0108" OE="0002"/>
NrInstancesRequest=<CMD Context="TRIQ" OC="0108" OE="0001"/>
Status.Good=OK 0
Status.Other=Warning *
[Component.Four]
DisplayName=Four
NrInstances=3
StatusRequest=<CMD Context="TRIQ" OC="0102" OE="0002"/>
Status.Good=OK 0
Status.Failed=Error 2
[Component.Use]
DisplayName=Use
Category=Mandatory
StatusRequest=<CMD Context="TRIQ" OC="0402" OE="0002"/>
Status.Good=OK 0
)";

constexpr const char* kRulesTree = R"({"Id":"root","Children":[{"Id":"S","Children":[
 {"Id":"Links","Children":[
  {"Id":"000-00","Status":3,"ObjStatus":2,"Assoc":"TRIQ:0701-0000-0002"},
  {"Id":"000-01","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0701-0001-0002"},
  {"Id":"000-02","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0701-0002-0002"},
  {"Id":"000-03","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0701-0003-0002"},
  {"Id":"000-04","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0701-0004-0002"}]},
 {"Id":"Zone","Children":[{"Id":"Zone/000-00","Status":2,"ObjStatus":7,"Assoc":"TRIQ:0108-0000-0002"}]},
 {"Id":"Four","Status":3,"ObjStatus":2,"Assoc":"TRIQ:0102-0000-0002"},
 {"Id":"Use","Status":2,"ObjStatus":10,"Assoc":"TRIQ:0402-0000-0002"}]}]})";

std::string Link(const char* name, const char* group, int needed, const char* state = "") {
  return std::string(R"({"class": "network-link", "name": ")") + name + R"(", "redundancy": {"group": ")" +
         group + R"(", "members": 2, "needed": )" + std::to_string(needed) + "}" + state + "}";
}

StatusNode Applied(const std::string& objects) {
  ScenarioMachine machine(ParseScenario(R"({"format": 1, "name": "t", "objects": [)" + objects + "]}", "t"));
  const Configuration configuration = ReadConfiguration(IniFile(kRulesConfiguration));
  StatusNode root = ReadStatusTree(kRulesTree);
  NameNodes(root, [](auto&, auto&, auto, auto) { return std::string(); });
  AttachObjects(root, machine, 0);
  ApplyRules(root, configuration);
  AttachConstantObjects(root, configuration, machine, 0);
  CountCoverage(root);
  TellMargins(root, configuration);
  return root.children[0];
}

TEST(NodeRules, EachLeafKnowsWhatMadeItsStatus) {
  const StatusNode subsystem = Applied("");
  const auto& links = subsystem.children[0];
  EXPECT_EQ(links.children[0].rule, (Rule{"EM_STATUS.ini", 21, "Component.Links", "Status.Failed"}));
  EXPECT_EQ(links.children[1].rule->key, "Status.Good");
  const auto& zone = subsystem.children[1];
  EXPECT_EQ(zone.section, "Component.Zone.alt") << "which is what asks for this class";
  EXPECT_EQ(zone.children[0].rule->key, "Status.Other");
  EXPECT_EQ(zone.children[0].rule->section, "Component.Zone.alt");
  EXPECT_EQ(subsystem.children[3].rule->key, "StatusValueQueryFail") << "it did not answer";
}

TEST(NodeRules, ConstantComponentStandsForAllItsObjects) {
  const StatusNode four = Applied(R"({"class": "fan", "name": "a"}, {"class": "fan", "name": "b",
      "condition": "critical", "reason": "stopped"})")
                              .children[2];
  EXPECT_EQ(four.coverage, (Coverage{2, 3, std::chrono::milliseconds(0)})) << "the third one is not there";
  ASSERT_TRUE(four.object);
  EXPECT_EQ(four.object->reading.name, "b") << "whose state decided";
}

TEST(NodeRules, SmallestMarginCountsAndNamesItsGroup) {
  const std::string failed = R"(, "condition": "critical", "reason": "no carrier")";
  const std::string late = R"(, "quality": "late", "reason": "not read")";
  const std::string good = Link("a", "bond0", 1) + "," + Link("b", "bond0", 1);
  const std::string half = Link("c", "bond1", 1, failed.c_str()) + "," + Link("d", "bond1", 1);
  const struct {
    std::string objects;
    std::optional<std::uint32_t> failures;
    const char* group;
    std::uint32_t present;
  } rows[] = {
      {good, 1, "bond0", 2},
      {good + "," + half, 0, "bond1", 1},
      {half + "," + good, 0, "bond1", 1},
      {Link("a", "both", 2, failed.c_str()) + "," + Link("b", "both", 2) + "," + half, 0, "both", 1},
      {good + "," + Link("c", "dark", 1, late.c_str()) + "," + Link("d", "dark", 1, late.c_str()),
       std::nullopt, "dark", 0},
      {Link("c", "bond1", 1, late.c_str()) + "," + Link("d", "bond1", 1), 0, "bond1", 1},
      {R"({"class": "network-link", "name": "eth0"})", std::nullopt, "", 0},
  };
  for (const auto& row : rows) {
    const StatusNode subsystem = Applied(row.objects);
    const auto& margin = subsystem.children[0].margin;
    ASSERT_TRUE(margin) << row.objects;
    EXPECT_EQ(margin->failures, row.failures) << row.objects;
    EXPECT_EQ(margin->group, row.group) << row.objects;
    EXPECT_EQ(margin->present, row.present) << row.objects;
    EXPECT_FALSE(subsystem.children[1].margin) << "has no redundancy rule";
  }
}

}  // namespace
}  // namespace emstatus::host
