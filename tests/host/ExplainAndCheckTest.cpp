#include <gtest/gtest.h>

#include "host/machine/ScenarioMachine.h"
#include "host/machine/Utf8.h"
#include "host/view/Causes.h"
#include "host/view/CheckResult.h"
#include "host/view/Explanation.h"
#include "host/view/NodeNames.h"
#include "host/view/PerformanceData.h"

namespace emstatus::host {
namespace {

using std::chrono::seconds;

constexpr const char* kExplainedTree = R"({"Id":"root","Desig":"Server","Status":3,"Children":[
 {"Id":"Cooling","Desig":"Cooling","Status":2,"Children":[
  {"Id":"Fans","Desig":"Fan","Status":3,"Children":[
   {"Id":"000-00","Desig":"Fan0","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0102-0000-0002"},
   {"Id":"000-01","Desig":"Fan1","Status":3,"ObjStatus":2,"IsCss":1,"Assoc":"TRIQ:0102-0001-0002"}]}]},
 {"Id":"Disks","Desig":"Storage","Status":2,"Children":[
  {"Id":"Disks/Disks","Desig":"Disks","Status":2,"Children":[
   {"Id":"Disks/000-01","Desig":"Disk1","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0501-0001-0002"},
   {"Id":"000-02","Desig":"Disk2","Status":2,"ObjStatus":10,"Assoc":"TRIQ:0501-0002-0002"}]},
  {"Id":"Space","Desig":"Space","Status":1,"Children":[
   {"Id":"Space/000-00","Desig":"/","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0601-0000-0002"},
   {"Id":"Space/000-01","Desig":"/srv","Status":4,"ObjStatus":13,"Assoc":"TRIQ:0601-0001-0002"}]}]},
 {"Id":"Use","Desig":"Memory","Status":1,"Children":[
  {"Id":"Use/Use","Desig":"In use","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0402-0000-0002"},
  {"Id":"Inlet","Desig":"Inlet","Status":1,"ObjStatus":0,"Assoc":"TRIQ:0101-0000-0002"}]}]})";

constexpr const char* kExplainedScenario = R"({"format": 1, "name": "t", "objects": [
 {"class": "fan", "name": "Fan 1", "unit": "RPM", "value": 4200, "limits": {"lowerCritical": 600, "lowerWarning": 900},
  "redundancy": {"group": "zone", "members": 2, "needed": 1}},
 {"class": "fan", "name": "Fan 2", "unit": "RPM", "value": 0, "limits": {"lowerCritical": 600}, "advice": "replace it",
  "redundancy": {"group": "zone", "members": 2, "needed": 1}},
 {"class": "disk", "name": "Disk 1"},
 {"class": "disk", "name": "Disk 2", "quality": "late", "reason": "not read for 12 s"},
 {"class": "filesystem-space", "name": "/", "unit": "%", "value": 38.5, "limits": {"upperWarning": 90, "upperCritical": 97}},
 {"class": "filesystem-space", "name": "/srv", "quality": "inactive", "reason": "not mounted"},
 {"class": "memory-use", "name": "it's=50|", "unit": "%", "value": 46.200012345},
 {"class": "temperature", "name": "Inlet", "unit": "°C", "value": -2.5, "limits": {"upperWarning": 38}}]})";

class ExplainAndCheckTest : public testing::Test {
 protected:
  ExplainAndCheckTest() {
    report_.root = ReadStatusTree(kExplainedTree);
    NameNodes(report_.root, [](auto&, const std::string& component, auto index, auto) {
      return component + std::to_string(index);
    });
    AttachObjects(report_.root, machine_, 0);
    CountCoverage(report_.root);
    report_.root.children[0].children[0].margin = {0, "zone", 2, 1, 1};
    report_.systemStatus = 2;
    report_.time = std::chrono::system_clock::time_point(seconds(1700000000));
  }

  StatusNode& Leaf(std::size_t subsystem, std::size_t component, std::size_t leaf) {
    return report_.root.children[subsystem].children[component].children[leaf];
  }
  std::string Found(const std::string& wanted) const {
    try {
      return FindNode(report_.root, wanted).back()->id;
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }
  CheckResult Check(const std::string& node, int age = 0) const {
    return CheckNode(FindNode(report_.root, node), report_, words_, report_.time + seconds(age),
                     seconds(120));
  }

  ScenarioMachine machine_{ParseScenario(kExplainedScenario, "t")};
  Report report_;
  StatusWords words_;
};

TEST_F(ExplainAndCheckTest, NodesAreFoundByWhateverTheyAreCalled) {
  const struct {
    const char* wanted;
    const char* id;
  } rows[] = {
      {"root", "root"},
      {"Server", "root"},
      {"000-01", "000-01"},
      {"Disks/000-01", "Disks/000-01"},
      {"Fan 2", "000-01"},
      {"fan 2", "000-01"},
      {"Fans1", "000-01"},
      {"Fan1", "000-01"},
      {"Cooling/Fan/Fan 2", "000-01"},
      {"cooling/FANS/fan 2", "000-01"},
      {"Server/Cooling/Fan/Fan 2", "000-01"},
      {"Component.Fans", "Fans"},
      {"Subsystem.Use", "Use"},
      {"Disks", "Disks"},
      {"Storage/Disks", "Disks/Disks"},
      {"Space//", "Space/000-00"},
      {"/", "Space/000-00"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Found(row.wanted), row.id) << row.wanted;
  }
  EXPECT_TRUE(
      Found("Fan 3").starts_with("there is no node \"Fan 3\" in the tree. The nearest:\n  Cooling/Fan/Fan"))
      << Found("Fan 3");
  Leaf(1, 0, 1).designation = "Fan 2";
  EXPECT_EQ(
      Found("Fan 2"),
      "\"Fan 2\" names 2 nodes:\n  Cooling/Fan/Fan 2  (id 000-01)\n  Storage/Disks/Disk 2  (id 000-02)\n"
      "Give more of the path, or the id.");
  EXPECT_EQ(FindSubsystem(report_.root, "Disks").back()->id, "Disks");
  EXPECT_THROW(FindSubsystem(report_.root, "Fans"), std::runtime_error);
}

TEST_F(ExplainAndCheckTest, CausesComeWorstFirstAndCoveredOnesCount) {
  const auto causes = CausesOf(FindNode(report_.root, "root"));
  ASSERT_EQ(causes.size(), 2U);
  EXPECT_EQ(PathText(causes[0]), "Cooling/Fan/Fan 2");
  EXPECT_EQ(PathText(causes[1]), "Storage/Disks/Disk 2");
  EXPECT_TRUE(IsCovered(causes[0]));
  EXPECT_EQ(StatusThatCounts(causes[0], report_), 2U);
  EXPECT_EQ(StatusThatCounts(FindNode(report_.root, "Component.Fans"), report_), 2U);

  Leaf(1, 0, 1).status = 3;
  report_.root.children[1].status = report_.root.children[0].status = report_.systemStatus = 3;
  EXPECT_EQ(PathText(CausesOf(FindNode(report_.root, "root"))[0]), "Storage/Disks/Disk 2") << "not covered";
  EXPECT_TRUE(IsCovered(FindNode(report_.root, "Component.Fans"))) << "though its subsystem has failed";
  report_.root.children[0].children[0].margin.reset();
  EXPECT_FALSE(IsCovered(FindNode(report_.root, "Component.Fans"))) << "no redundancy rule";
}

TEST_F(ExplainAndCheckTest, ExplainsACause) {
  StatusNode& fan = Leaf(0, 0, 1);
  fan.rule = {"EM_STATUS.ini", 98, "Component.Fans", "Status.Failed"};
  fan.since = WallTime(seconds(1699990000));
  const NodePath path = FindNode(report_.root, "Cooling");
  const std::string text = ExplanationText(path, report_, words_, false);
  for (const char* line :
       {"Cooling: Warning\n", "Server Error > Cooling Warning > Fan Error > Fan 2 Error\n",
        "  Coverage      2 of 2 read, oldest 0 s\n", "  Reading       0 RPM (failed below 600 RPM)\n",
        "  Quality       good, age 0 s\n", "  Raw value     2 (failed)\n",
        "  Rule          EM_STATUS.ini:98, [Component.Fans] Status.Failed\n",
        "  Redundancy    zone: 1 of 2 work, 1 needed; the component tolerates no more failure (zone)\n",
        "  What to do    replace it\n", "  Serviceable   by the customer\n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line << "not in\n" << text;
  }
  const auto json = ExplanationJson(path, report_, words_);
  ASSERT_EQ(json["Causes"].size(), 1U);
  const auto& cause = json["Causes"][0];
  EXPECT_EQ(cause["Path"][3]["Id"], "000-01");
  EXPECT_EQ(cause["RawWord"], "failed");
  EXPECT_EQ(cause["Rule"]["Line"], 98);
  EXPECT_EQ(cause["Covered"], true);
  EXPECT_EQ(cause["Object"]["Advice"], "replace it");

  const NodePath good = FindNode(report_.root, "Memory");
  EXPECT_NE(ExplanationText(good, report_, words_, false).find("In use                          OK  46.2 %"),
            std::string::npos)
      << ExplanationText(good, report_, words_, false);
  EXPECT_EQ(ExplanationJson(good, report_, words_)["Evidence"].size(), 2U);
}

TEST_F(ExplainAndCheckTest, StaleSimulatedAndUnansweredAreTold) {
  StatusNode& disk = Leaf(1, 0, 1);
  disk.objectStatus = 0;
  disk.status = 1;
  const auto text = [&] { return ExplanationText(FindNode(report_.root, "Disk 2"), report_, words_, false); };
  EXPECT_NE(text().find("OK (stale)"), std::string::npos) << text();
  EXPECT_NE(text().find("  Quality       late, age"), std::string::npos) << text();
  disk.rule = {"EM_STATUS.ini", 0, "Configuration", "StatusValueQueryFail"};
  EXPECT_NE(text().find("StatusValueQueryFail (the default): there was no answer"), std::string::npos)
      << text();
  disk.simulated = true;
  report_.simulation.parts["Disks2"] = {1, -1, -1};
  EXPECT_NE(text().find("  Rule          none: it is simulated for ever"), std::string::npos) << text();
  EXPECT_NE(text().find("\nSimulated for ever: Disks2 OK"), std::string::npos) << text();
}

TEST_F(ExplainAndCheckTest, ChecksByTheConventions) {
  const CheckResult all = Check("root");
  EXPECT_EQ(all.code, 1) << "redundancy covers the fan";
  EXPECT_EQ(all.output.substr(0, all.output.find(" | ")),
            "WARNING - Fan, Fan 2: Error, 0 RPM, at least 600 RPM expected; 1 o... (+1 more)");
  EXPECT_NE(all.output.find("\nDisks, Disk 2: Warning, late: not read for 12 s\n"), std::string::npos)
      << all.output;
  EXPECT_NE(all.output.find("\n6 of 7 read, oldest 0 s\n"), std::string::npos) << all.output;

  EXPECT_EQ(Check("Fan 2").code, 1) << "no part is worse than the system";
  EXPECT_EQ(Check("Memory").code, 0);
  EXPECT_EQ(Check("Memory").output.substr(0, 38), "OK - Memory: OK, 2 of 2 read, oldest 0");
  EXPECT_EQ(Check("/srv").code, 3) << "switched off";
  EXPECT_EQ(Check("Disk 2").code, 3) << "nothing was read";
  EXPECT_EQ(Check("Disks").code, 1) << "some was read";
  report_.systemStatus = 3;
  report_.root.children[0].status = 3;
  report_.root.children[0].children[0].margin.reset();
  EXPECT_EQ(Check("Fan 2").code, 2);
  Leaf(1, 0, 1).object->reading.quality = Quality::Lost;
  EXPECT_EQ(Check("Disk 2").code, 1) << "known to be gone";
  report_.simulation.parts["Fans0"] = {1, -1, -1};
  EXPECT_NE(Check("Memory").output.find(" (parts are simulated) | "), std::string::npos);
  report_.systemStatus = 0;
  EXPECT_EQ(Check("root").code, 3);
}

TEST_F(ExplainAndCheckTest, AnOldReportSaysNothing) {
  EXPECT_EQ(Check("Memory", 120).code, 0);
  const CheckResult old = Check("Memory", 121);
  EXPECT_EQ(old.code, 3);
  EXPECT_EQ(old.output, "UNKNOWN - the last scan of emhost is 121 s old: it hangs or is stopped\n");
  EXPECT_EQ(Check("Memory", -121).code, 3);
}

TEST_F(ExplainAndCheckTest, FirstLineIsShortWhateverStandsInIt) {
  Leaf(0, 0, 1).object->reading.reason = "";
  for (std::size_t length = 0; length < 120; ++length) {
    Leaf(0, 0, 1).object->reading.reason += "\u00e4|\n"[length % 4];
    const std::string output = Check("root").output;
    const std::string line = output.substr(0, output.find(" | "));
    EXPECT_LT(ColumnsOf(line), 80U) << line;
    EXPECT_EQ(CleanUtf8(line), line);
    EXPECT_EQ(line.find_first_of("|\n"), std::string::npos) << line;
  }
  EXPECT_EQ(UnknownResult("a|b\nc").output, "UNKNOWN - a/b\nc\n");
  const std::string text = UnknownResult(std::string(200, 'x')).output;
  EXPECT_EQ(text.find('\n'), 79U);
  EXPECT_NE(text.find(std::string(200, 'x')), std::string::npos) << "the whole of it follows";
}

TEST_F(ExplainAndCheckTest, PerformanceDataIsReadByAnyone) {
  EXPECT_EQ(PerformanceData(FindNode(report_.root, "root")),
            "'Cooling/Fan/Fan 1'=4200;900:;600:;0 'Cooling/Fan/Fan 2'=0;;600:;0 "
            "'Storage/Space//'=38.5%;90;97;0;100 'Storage/Space//srv'=U 'Memory/In use'=46.2%;;;0;100 "
            "'Memory/Inlet'=-2.5;~:38");
  StatusNode twice = Leaf(0, 0, 0);
  twice.designation = "it's=1|\n";
  twice.children.clear();
  report_.root.children[0].children[0].children.push_back(twice);
  report_.root.children[0].children[0].children.push_back(twice);
  const std::string text = PerformanceData(FindNode(report_.root, "Component.Fans"));
  EXPECT_NE(text.find("'Cooling/Fan/it''s_1_ '=4200"), std::string::npos) << text;
  EXPECT_NE(text.find("'Cooling/Fan/it''s_1_  #2'=4200"), std::string::npos) << text;
}

}  // namespace
}  // namespace emstatus::host
