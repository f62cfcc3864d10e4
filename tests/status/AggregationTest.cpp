#include "status/Aggregation.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "status/AssociationKey.h"
#include "status/MergeStatus.h"
#include "status/WorkingTree.h"

namespace emstatus::test {
namespace {

TEST(AggregationTest, MergesByExactSlotValues) {
  const std::map<StatusValue, std::set<StatusValue>> overwritten = {
      {NoStatus, {}},           {OK, {0, 4, 5}},   {Warning, {0, 1, 4, 5}},
      {Error, {0, 1, 2, 4, 5}}, {StatusFour, {0}}, {StatusFive, {0, 4}},
  };
  for (int child = 0; child < 256; ++child) {
    for (int slot = 0; slot < 256; ++slot) {
      auto value = static_cast<StatusValue>(slot);
      const auto row = overwritten.find(static_cast<StatusValue>(child));
      const bool changes = row != overwritten.end() && row->second.contains(value);
      EXPECT_EQ(MergeStatus(value, static_cast<StatusValue>(child)), changes) << child << " into " << slot;
      EXPECT_EQ(value, changes ? child : slot);
    }
  }
}

TEST(AggregationTest, SplitsByWhoCanServiceIt) {
  const struct {
    StatusValue status;
    int indicator;
    bool isCss;
    int css;
    int nonCss;
  } rows[] = {
      {0, 1, true, 0, 0}, {0, 0, false, 0, 0},   {1, 1, true, 1, 1},   {2, 1, true, 2, 1},
      {3, 5, true, 3, 1}, {3, 0, false, 1, 3},   {2, -1, false, 1, 2}, {4, 0, false, 1, 1},
      {4, 1, true, 1, 1}, {200, 0, false, 1, 1},
  };
  for (const auto& row : rows) {
    StatusTreeNode node;
    node.status = row.status;
    node.cssStatus = node.nonCssStatus = Error;
    MakeGelCssStatus(node, row.indicator);
    EXPECT_EQ(node.isCSS, row.isCss);
    EXPECT_EQ(node.cssStatus, row.css) << int{row.status} << " " << row.indicator;
    EXPECT_EQ(node.nonCssStatus, row.nonCss) << int{row.status} << " " << row.indicator;
  }
}

TEST(AggregationTest, DrivesTheLed) {
  const struct {
    StatusValue status;
    StatusValue css;
    StatusValue nonCss;
    int led;
  } rows[] = {
      {0, 3, 0, 0}, {1, 3, 1, 1},    {2, 3, 2, 0x83}, {2, 2, 2, 2},
      {3, 2, 3, 3}, {3, 3, 1, 0x83}, {4, 2, 1, 0x82},
  };
  for (const auto& row : rows) {
    StatusTreeNode root;
    root.status = row.status;
    root.cssStatus = row.css;
    root.nonCssStatus = row.nonCss;
    EXPECT_EQ(GelValue(root), row.led) << int{row.status} << int{row.css} << int{row.nonCss};
  }
}

TEST(AssociationKeyTest, LeavesOutWhatNothingFollows) {
  constexpr std::uint32_t kServer = 7;
  const struct {
    const char* object;
    const char* extension;
    std::optional<std::uint32_t> instance;
    std::uint32_t cabinet;
    const char* key;
  } rows[] = {
      {nullptr, nullptr, {}, kServer, "TRIQ:0210"},
      {"0003", nullptr, {}, kServer, "TRIQ:0210-0003"},
      {"0003", nullptr, {}, 12, "TRIQ:0210-0003-0000-000C"},
      {nullptr, nullptr, {}, 12, "TRIQ:0210-0000-0000-000C"},
      {nullptr, "5", {}, kServer, "TRIQ:0210-0000-0005"},
      {nullptr, "5", {}, 0, "TRIQ:0210-0000-0005-0000"},
      {"0003", "5", 0x1FFFF, kServer, "TRIQ:0210-1FFFF-0005"},
      {"zz", "0x1A", {}, kServer, "TRIQ:0210-0000-001A"},
  };
  for (const auto& row : rows) {
    ComponentDefinition component;
    component.queryContext = QueryContext::Triq;
    Element& request = component.statusRequest.command;
    request.attributes.push_back({"OC", "0210"});
    if (row.object != nullptr) request.attributes.push_back({"OI", row.object});
    if (row.extension != nullptr) request.attributes.push_back({"OE", row.extension});
    EXPECT_EQ(MakeAssociationKey(component, row.instance, row.cabinet, kServer), row.key);
  }
  ComponentDefinition component;
  component.statusRequest.command.attributes = {{"OID", "1.3.%d.2"}};
  EXPECT_EQ(MakeAssociationKey(component, 5, 0, 0), "");
  component.queryContext = QueryContext::Snmp;
  EXPECT_EQ(MakeAssociationKey(component, 5, 0, 0), "SNMP:1.3.5.2");
  EXPECT_EQ(MakeAssociationKey(component, {}, 0, 0), "SNMP:1.3.%d.2");
}

TEST(WorkingTreeTest, IdsThatMeetAreToldApart) {
  WorkingTree tree({});
  StatusTreeNode& system = tree.Subsystem("root");
  StatusTreeNode& component = tree.Component(system, "root", "root");
  StatusTreeNode& first = tree.Instance(component, "000-01", "root");
  StatusTreeNode& other = tree.Component(system, "B", "root");
  StatusTreeNode& second = tree.Instance(other, "000-01", "B");
  EXPECT_EQ(system.id, "root/root");
  EXPECT_EQ(component.id, "root/root/root");
  EXPECT_EQ(first.id, "000-01");
  EXPECT_EQ(second.id, "B/000-01");
  EXPECT_EQ(&tree.Instance(other, "000-01", "B"), &second);
  EXPECT_EQ(other.children, std::vector<std::string>{"B/000-01"});
  EXPECT_EQ(second.parentId, "B");
}

TEST(WorkingTreeTest, RemembersStatusesAndRefillsEmptyNodes) {
  NodeMap published;
  published["A"] = {.designation = "",
                    .associationKey = "",
                    .status = Error,
                    .cssStatus = OK,
                    .nonCssStatus = Error,
                    .id = "A",
                    .parentId = "root",
                    .children = {}};
  published["B"];
  WorkingTree tree(published);
  StatusTreeNode& a = tree.Subsystem("A");
  EXPECT_EQ(a.status, NoStatus);
  EXPECT_EQ(a.cssStatus, NoStatus);
  EXPECT_EQ(a.nonCssStatus, NoStatus);
  EXPECT_EQ(tree.StatusBefore(a), Error);
  StatusTreeNode& b = tree.Subsystem("B");
  EXPECT_EQ(b.id, "B");
  EXPECT_EQ(tree.Root().children, std::vector<std::string>{"B"})
      << "a node that was never filled was missing";
  EXPECT_EQ(tree.StatusBefore(tree.Subsystem("C")), NoStatus);
}

}  // namespace
}  // namespace emstatus::test
