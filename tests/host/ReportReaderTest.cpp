#include <gtest/gtest.h>

#include "host/machine/TimeText.h"
#include "host/view/ReportReader.h"
#include "host/view/TreeJson.h"
#include "host/view/TreePrinter.h"

namespace emstatus::host {
namespace {

StatusNode Leaf(const char* id, std::uint32_t state, const char* key) {
  StatusNode leaf;
  leaf.id = id;
  leaf.objectStatus = state;
  leaf.status = state == 0 ? 1 : 2;
  leaf.associationKey = key;
  return leaf;
}

ObjectView Seen(ObjectClass objectClass, Quality quality, int age) {
  ObjectView object;
  object.address = {objectClass, 1, 2};
  object.reading.objectClass = objectClass;
  object.reading.id = "id";
  object.reading.name = "n\xC3\xA4me";
  object.reading.quality = quality;
  object.age = std::chrono::milliseconds(age);
  return object;
}

/// A report in which every member of everything is something else than it is by itself.
Report FullReport() {
  Report report;
  report.time = *ReadUtc("2026-03-01T09:15:02.123Z");
  report.begun = WallTime(std::chrono::seconds(1700000000));
  report.systemStatus = 2;
  report.led = 0x83;
  report.simulation.parts = {{"Fan0", {3, -1, 1}}, {"Fan7", {0, -12, -1}}};
  report.simulation.absent = {"Fan7"};
  report.simulation.kept = {"Fan0"};
  report.simulation.byHand = true;
  report.simulation.until = WallTime(std::chrono::seconds(1900000000));

  StatusNode good = Leaf("000-00", 0, "TRIQ:0102-0000-0002");
  good.object = Seen(ObjectClass::Fan, Quality::Good, 4250);
  good.object->reading.condition = Condition::Warning;
  good.object->reading.measurement = {860.1, Unit::RevolutionsPerMinute, {1.5, 2.5, 3.5, 4.5}};
  good.object->reading.redundancy = {"zone", 3, 1, 2};
  good.object->reading.customerServiceable = true;
  good.object->reading.reason = "slow";
  good.object->reading.advice = "order one";
  good.isCss = true;
  good.simulated = true;
  good.name = "Fan0";
  good.section = "Component.Fans";
  good.since = WallTime(std::chrono::seconds(1800000000));
  good.rule = {"EM_STATUS.ini", 12, "Component.Fans", "Status.Warning"};
  StatusNode late = Leaf("000-01", 0, "TRIQ:0102-0001-0002");
  late.object = Seen(ObjectClass::Fan, Quality::Late, 600000);
  StatusNode inactive = Leaf("000-02", 13, "TRIQ:0102-0002-0002");
  inactive.object = Seen(ObjectClass::Fan, Quality::Inactive, 100);
  StatusNode component;
  component.id = component.designation = "Fans";
  component.margin = {1, "zone", 3, 1, 2};
  component.children = {good,
                        late,
                        inactive,
                        Leaf("000-03", 2, "TRIQ:0102-0003-0002"),
                        Leaf("x", 2, "TRIQ:9999"),
                        Leaf("y", 2, "")};
  StatusNode other;
  other.id = "Other";
  other.margin = RedundancyMargin{};
  report.root.id = "root";
  report.root.children = {component, other};
  CountCoverage(report.root);
  return report;
}

TEST(Coverage, CountsWhatShouldBeReadAndWhatCouldBe) {
  const StatusNode root = FullReport().root;
  const Coverage expected{1, 3, std::chrono::milliseconds(4250)};
  EXPECT_EQ(root.coverage, expected) << "good, late and gone count; switched off or no object do not";
  EXPECT_EQ(root.children[0].coverage, expected);
  EXPECT_EQ(root.children[1].coverage, Coverage{});
}

TEST(Coverage, StatusFromBeforeIsNoStatusOfNow) {
  StatusNode leaf = Leaf("a", 0, "TRIQ:0102-0001-0002");
  leaf.object = Seen(ObjectClass::Fan, Quality::Late, 600000);
  EXPECT_TRUE(IsStale(leaf));
  leaf.objectStatus = std::uint32_t(RawState::Late);
  EXPECT_FALSE(IsStale(leaf)) << "the module knows that it is late";
  leaf.objectStatus = 1;
  leaf.associationKey = "TRIQ:0102-0001-0009";
  EXPECT_FALSE(IsStale(leaf)) << "asked for something else than the state";
  leaf.associationKey = "TRIQ:0102-0001-0002";
  leaf.simulated = true;
  EXPECT_FALSE(IsStale(leaf));
  EXPECT_FALSE(IsStale(Leaf("a", 0, "")));
}

TEST(ReportReader, IsTheInverseOfTheWriter) {
  const StatusWords words;
  const Report report = FullReport();
  const nlohmann::json written = nlohmann::json::parse(TreeJson(report, words).dump());
  const Report read = ReadReport(written);
  EXPECT_EQ(nlohmann::json::parse(TreeJson(read, words).dump()), written);
  EXPECT_EQ(TreeText(read, words, false), TreeText(report, words, false));
  EXPECT_EQ(written["Tree"]["Children"][0]["Children"][1]["Stale"], true);
  for (const char* member : {"Since", "Rule", "Object", "Name", "Section", "Simulated"}) {
    EXPECT_TRUE(written["Tree"]["Children"][0]["Children"][0].contains(member)) << member;
  }
  EXPECT_EQ(read.simulation, report.simulation);

  const nlohmann::json slow =
      nlohmann::json::parse(TreeJson(report, StatusWords("[StatusMapping]\nSlow=2\n")).dump());
  EXPECT_EQ(ReadStatusWords(slow).Of(2), "Slow");

  const nlohmann::json bare = nlohmann::json::parse(TreeJson(Report{}, words).dump());
  EXPECT_EQ(nlohmann::json::parse(TreeJson(ReadReport(bare), words).dump()), bare);
}

TEST(ReportReader, SaysWhatIsWrongWhere) {
  const nlohmann::json good = nlohmann::json::parse(TreeJson(FullReport(), {}).dump());
  const struct {
    const char* pointer;
    nlohmann::json value;
    const char* message;
  } rows[] = {
      {"", nlohmann::json::array(), "/: expected a member \"Version\""},
      {"/Version", 2U, "/Version: expected version 1, found 2"},
      {"/Time", "2026-13-01T09:15:02.123Z", "/Time: expected a time"},
      {"/Time", "2026-03-01", "/Time: expected a time"},
      {"/Led", -1, "/Led: expected a whole number"},
      {"/Tree", 3, "/Tree: expected a member \"Id\""},
      {"/Tree/Children", 3, "/Tree/Children: expected an array"},
      {"/Tree/Children/0/Coverage/OldestSeconds", -3, "expected seconds"},
      {"/Tree/Children/0/Children/0/Object/Class", "ship", "/Object/Class: expected a class"},
      {"/Tree/Children/0/Children/0/Object/Quality", "fine", "expected a quality"},
      {"/Tree/Children/0/Children/0/Object/Unit", "furlong", "expected a unit"},
      {"/Simulation/Parts", nullptr, "/Simulation/Parts: expected an array"},
  };
  for (const auto& row : rows) {
    nlohmann::json document = good;
    document[nlohmann::json::json_pointer(row.pointer)] = row.value;
    try {
      ReadReport(document);
      FAIL() << row.pointer;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(row.message), std::string::npos) << error.what();
    }
  }
}

}  // namespace
}  // namespace emstatus::host
