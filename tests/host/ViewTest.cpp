#include <gtest/gtest.h>

#include "host/machine/ScenarioMachine.h"
#include "host/machine/TimeText.h"
#include "host/machine/Utf8.h"
#include "host/module/HostCodes.h"
#include "host/module/TraceOutput.h"
#include "host/view/ReportAge.h"
#include "host/view/ReportReader.h"
#include "host/view/StatusChange.h"
#include "host/view/StatusNode.h"
#include "host/view/TreeJson.h"
#include "host/view/TreePrinter.h"

namespace emstatus::host {
namespace {

constexpr const char* kViewTree =
    R"({"SystemStatusTree":{},"Version":1,"Id":"root","Desig":"Server","Status":3,
"CssStatus":3,"NoCssStatus":1,"IsCss":0,"Children":[
 {"Id":"F","Desig":"Fans","Status":3,"CssStatus":3,"NoCssStatus":1,"IsCss":0,"Children":[
  {"Id":"Fans","Desig":"Fans","Status":3,"CssStatus":3,"NoCssStatus":1,"IsCss":0,"Children":[
   {"Id":"000-00","Desig":"Fan0","Status":1,"CssStatus":1,"NoCssStatus":1,"IsCss":1,"ObjStatus":0,"Assoc":"TRIQ:0102-0000-0002"},
   {"Id":"000-01","Desig":"Rear","Status":3,"CssStatus":3,"NoCssStatus":1,"IsCss":1,"ObjStatus":2,"Assoc":"TRIQ:0102-0001-0002"},
   {"Id":"003-00","Desig":"Fan0-3","Status":2,"CssStatus":1,"NoCssStatus":2,"IsCss":0,"ObjStatus":10,"Assoc":"TRIQ:0102-0000-0002-0003"}]}]},
 {"Id":"P","Desig":"Power","Status":0,"CssStatus":0,"NoCssStatus":0,"IsCss":0,"ObjStatus":0}]})";

constexpr const char* kScenario = R"({"format": 1, "name": "view", "extensionCabinets": [3], "objects": [
 {"class": "fan", "name": "Lüfter 1", "unit": "RPM", "value": 4200,
  "redundancy": {"group": "fans", "members": 2, "needed": 1}},
 {"class": "fan", "name": "Lüfter 2", "unit": "RPM", "value": 0, "limits": {"lowerCritical": 600}, "advice": "replace it",
  "redundancy": {"group": "fans", "members": 2, "needed": 1}},
 {"class": "fan", "name": "Enclosure", "cabinet": 3, "quality": "late", "reason": "not read for 12 s"}]})";

class ViewTest : public testing::Test {
 protected:
  ViewTest() {
    report_.root = ReadStatusTree(kViewTree);
    AttachObjects(report_.root, machine_, 0);
    CountCoverage(report_.root);
    report_.systemStatus = 2;
    report_.led = 0x83;
  }

  ScenarioMachine machine_{ParseScenario(kScenario, "view")};
  Report report_;
  StatusWords words_{"[StatusMapping]\nOK=1\nWarning=2\nBroken = 3 ; words\n[Other]\nBad=2\n"};
};

TEST_F(ViewTest, TreeForPeople) {
  EXPECT_EQ(TreeText(report_, words_, false),
            "Server                       Broken              2 of 3 read, oldest 0 s\n"
            "  Fans                       Broken              2 of 3 read, oldest 0 s\n"
            "    Fans                     Broken              2 of 3 read, oldest 0 s\n"
            "      Lüfter 1               OK        4200 RPM\n"
            "      Rear                   Broken    0 RPM     0 RPM, at least 600 RPM expected; 1 of 2 work, "
            "1 needed; replace it (the customer can mend it)\n"
            "      Enclosure (cabinet 3)  Warning             late: not read for 12 s\n"
            "  Power                      NoStatus\n"
            "\n"
            "System status: Warning\n"
            "Error LED:     Broken, the customer can mend it\n");
}

TEST_F(ViewTest, WholeSubsystemsTellTheirCoverageToo) {
  report_.root.children[0].children[0].children.pop_back();
  CountCoverage(report_.root);
  EXPECT_NE(TreeText(report_, words_, false)
                .find("\n    Fans        Broken              2 of 2 read, oldest 0 s\n"),
            std::string::npos);
}

TEST_F(ViewTest, APartThatIsNotThereSaysSo) {
  report_.root.children[0].children[0].children[1].object.reset();
  EXPECT_NE(TreeText(report_, words_, false).find("  there is no such object now\n"), std::string::npos);
}

TEST_F(ViewTest, AReportIsAsOldAsItsScan) {
  report_.time = *ReadUtc("2026-03-01T09:15:02.000Z");
  auto json = TreeJson(report_, words_);
  const auto asMade = json;
  LetAge(json, report_.time - std::chrono::hours(1));
  EXPECT_EQ(json, asMade);
  LetAge(json, report_.time + std::chrono::milliseconds(18250));
  const Report aged = ReadReport(nlohmann::json::parse(json.dump()));
  EXPECT_EQ(aged.root.coverage.oldest.count(), 18250);
  EXPECT_EQ(aged.root.children[0].children[0].children[0].object->age.count(), 18250);
  EXPECT_EQ(aged.root.children[1].coverage.oldest.count(), 0) << "nothing was read";
  const std::string text = LastScanText(report_, report_.time + std::chrono::milliseconds(18250));
  EXPECT_EQ(text.substr(text.rfind(',')), ", 18 s ago\n");
  EXPECT_EQ(LastScanText(report_, report_.time), "");
  nlohmann::ordered_json strange = {{"Time", 5}, {"Tree", 6}};
  LetAge(strange, aged.time);
  LetAge(strange["Time"], aged.time);
}

TEST_F(ViewTest, ColoursStandBesideTheWords) {
  const std::string text = TreeText(report_, words_, true);
  EXPECT_NE(text.find("\033[31mBroken\033[0m"), std::string::npos);
  EXPECT_NE(text.find("\033[32mOK\033[0m        4200 RPM"), std::string::npos)
      << "columns ignore the colours";
}

TEST_F(ViewTest, TreeForPrograms) {
  const auto json = TreeJson(report_, words_);
  EXPECT_EQ(json["SystemStatusName"], "Warning");
  EXPECT_EQ(json["Led"], 0x83);
  const auto& fans = json["Tree"]["Children"][0]["Children"][0]["Children"];
  EXPECT_EQ(fans[0]["Object"]["Value"], 4200.0);
  EXPECT_EQ(fans[1]["Object"]["Limits"]["LowerCritical"], 600.0);
  EXPECT_EQ(fans[1]["Object"]["Redundancy"]["Present"], 1);
  EXPECT_EQ(fans[2]["Object"]["Quality"], "late");
  EXPECT_FALSE(fans[2]["Object"].contains("Condition")) << "nothing that was not read has a condition";
}

TEST_F(ViewTest, EventsBecomeChanges) {
  StatusHistory history;
  const auto event = [&](TreeCode code, std::uint32_t object, nlohmann::json data) {
    Notice notice;
    notice.kind = Notice::Kind::Event;
    notice.event = {std::uint32_t(code), 0x00020005, object, 3, std::move(data)};
    return history.Take(notice);
  };
  const auto first = event(TreeCode::InstanceStatus, 1, 1);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->before, 0U);
  auto second = event(TreeCode::InstanceStatus, 1, nlohmann::json{{"RAW", {3}}});
  ASSERT_TRUE(second);
  EXPECT_EQ(second->before, 1U);
  EXPECT_EQ(second->now, 3U);
  EXPECT_EQ(second->subsystem, 2U);
  EXPECT_EQ(second->component, 5U);
  EXPECT_FALSE(event(TreeCode::InstanceStatus, 1, 3)) << "repeated";
  EXPECT_FALSE(event(TreeCode::InstanceStatus, 1, "bad"));
  EXPECT_FALSE(event(TreeCode::WholeTree, 1, 1));
  EXPECT_TRUE(event(TreeCode::InstanceStatus, 2, 3)) << "another instance";
  const auto system = event(TreeCode::SystemStatus, 0, 2);
  ASSERT_TRUE(system);
  EXPECT_EQ(ChangeText(*system, words_, false).substr(19), "  System: NoStatus -> Warning");

  second->componentName = "Fans";
  second->name = "Rear";
  second->object = machine_.Find({ObjectClass::Fan, 1, 0});
  EXPECT_EQ(
      ChangeText(*second, words_, false).substr(19),
      "  Fans, Rear (cabinet 3): OK -> Broken  (0 RPM, at least 600 RPM expected; 1 of 2 work, 1 needed; "
      "replace it)");
}

TEST_F(ViewTest, InstancesAreFoundByTheirPlace) {
  const StatusNode* node = FindInstance(report_.root, "Fans", "Fans", 0, 3);
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(NodeName(*node), "Enclosure");
  EXPECT_EQ(FindInstance(report_.root, "Fans", "Fans", 1, 3), nullptr);
  EXPECT_EQ(FindInstance(report_.root, "Power", "Fans", 0, 0), nullptr);
}

TEST(StatusNode, ClassesWithoutPartsAreAbsent) {
  StatusNode root = ReadStatusTree(kViewTree);
  DropAbsent(root);
  ASSERT_EQ(root.children.size(), 1U);
  EXPECT_EQ(root.children[0].designation, "Fans");
}

TEST(StatusNode, TextThatIsNoTreeIsRefused) {
  for (const char* text :
       {"", "[]", "{\"Id\":3}", "{\"Status\":\"bad\"}", "{\"Children\":[1]}", "{\"Children\":{\"a\":1}}"}) {
    EXPECT_THROW(ReadStatusTree(text), std::runtime_error) << text;
  }
  EXPECT_EQ(ReadStatusTree("{\"Desig\":\"M\xFCnchen\"}").designation, "M\xEF\xBF\xBDnchen");
}

TEST(StatusWords, FromAConfiguration) {
  const StatusWords words(
      "; [StatusMapping]\r\n[Info]\nOK=7\n [StatusMapping]\r\n Good=1\r\n;Late=2\nHuge=256\nNo\n");
  EXPECT_EQ(words.Of(1), "Good");
  EXPECT_EQ(words.Of(2), "Warning");
  EXPECT_EQ(words.Of(7), "Status 7");
  const int codes[] = {3, 0, 1, 2, 3, 3};
  for (std::uint32_t status = 0; status < 6; ++status) {
    EXPECT_EQ(ExitCodeOf(status), codes[status]) << status;
  }
}

TEST(TraceOutput, LinesBehindTheTime) {
  const struct {
    const char* message;
    const char* lines;
  } rows[] = {
      {"\n\nEM_STATUS : x", "T EM_STATUS : x\n"}, {"a\n\nb\n", "T a\nT \nT b\n"}, {"\n", ""}, {"", ""}};
  for (const auto& row : rows) {
    EXPECT_EQ(TraceLines(row.message, "T"), row.lines);
  }
}

TEST(Utf8, BytesThatAreNoTextAreReplaced) {
  const struct {
    const char* text;
    const char* clean;
    std::size_t columns;
  } rows[] = {{"Lüfter", "Lüfter", 6},
              {"\xFF", "\uFFFD", 1},
              {"a\xC3", "a\uFFFD", 2},
              {"\xC0\xAF", "\uFFFD\uFFFD", 2},
              {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD", 3},
              {"\xF0\x9F\x98\x80", "\U0001F600", 1}};
  for (const auto& row : rows) {
    EXPECT_EQ(CleanUtf8(row.text), row.clean);
    EXPECT_EQ(ColumnsOf(CleanUtf8(row.text)), row.columns);
  }
  EXPECT_EQ(CleanLine("a\033[31m\n\x7F\xC2\x9B\u00A0ü\xFF"), "a [31m   \u00A0ü\uFFFD");
}

}  // namespace
}  // namespace emstatus::host
