#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/commands/MeasurementText.h"
#include "tests/host/EmhostProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using std::chrono::milliseconds;

std::string Component(const std::string& name, const std::string& keys, const char* numbers,
                      const char* data = "") {
  return "[Component." + name + "]\nDisplayName=" + name + "\n" + keys +
         "StatusRequest=<CMD Context=\"TRIQ\" " + numbers + ">" + data +
         "</CMD>\nStatus.Good=OK 0\nStatus.Other=Error *\n";
}

/// Every way in which a component can be asked, and some in which it cannot be tried.
std::string Configuration() {
  std::string odd = Component("Deaf", "", "OC=\"0102\" OE=\"0002\"");
  odd.replace(odd.find("Error *"), 7, "OK *");
  return "[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=4\n[Configuration]\nInitialPollingDelaySeconds=600\n"
         "PollingRateSeconds=1\nAdvancedPollingRateSeconds=1\nAdvancedPollingCycles=4\n"
         "[StatusMapping]\nNoStatus=0\nOK=1\nWarning=2\nError=3\n[System]\nDisplayName=S\nSubsystems=S\n[Subsystem.S]\n"
         "DisplayName=S\nComponents=Fans Third Named Warm Cold Idle Quality Source Value Deaf\n" +
         Component("Fans",
                   "InstanceName=Fan\nNrInstancesRequest=<CMD Context=\"TRIQ\" OC=\"0102\" OE=\"0001\"/>\n",
                   "OC=\"0102\" OE=\"0002\"") +
         Component("Third", "", "OC=\"0501\" OE=\"0002\" OI=\"0003\"") +
         Component("Named", "", "OC=\"0601\" OE=\"0002\" OI=\"FF00\"", "<DATA Type=\"string\">/var</DATA>") +
         Component("Warm", "", "OC=\"0101\" OE=\"000D\"", "<DATA Type=\"int\">40</DATA>") +
         Component("Cold", "", "OC=\"0403\" OE=\"000E\"", "<DATA Type=\"int\">-5</DATA>") +
         Component("Idle", "Category=Inactive\n", "OC=\"0801\" OE=\"0002\"") +
         Component("Quality", "", "OC=\"0103\" OE=\"0009\"") +
         Component("Source", "", "OC=\"0803\" OE=\"0002\"") +
         Component("Value", "", "OC=\"0104\" OE=\"0005\"") + odd;
}

TEST(BudgetMeasurement, EachComponentShowsItsFailureInTime) {
  TemporaryDirectory folder;
  const std::string file = folder.Write("EM_STATUS.ini", Configuration());
  EmhostProcess process({"check-config", "--json", "--measure", "--module", REAL_MODULE, file});
  EXPECT_EQ(process.ExitCode(), 0) << process.Written();
  const auto json = nlohmann::json::parse(process.Written());
  std::map<std::string, std::string> verdicts;
  std::map<std::string, double> seconds;
  for (const auto& row : json.at("Measured")) {
    const std::string name = row.at("Component").get<std::string>() + " " + row.at("Case").get<std::string>();
    verdicts[name] = row.at("Verdict");
    if (row.at("MeasuredSeconds").is_number()) seconds[name] = row.at("MeasuredSeconds");
  }
  for (const char* name : {"Fans", "Third", "Named", "Warm", "Cold", "Idle", "Quality", "Source"}) {
    EXPECT_EQ(verdicts[std::string(name) + " fault"], "within") << name;
    EXPECT_EQ(verdicts[std::string(name) + " silence"], std::string(name) == "Source" ? "" : "within")
        << name;
  }
  EXPECT_EQ(verdicts["Value fault"], "not measured: no failure makes it a warning or an error");
  EXPECT_EQ(verdicts["Deaf fault"], "not measured: no failure makes it a warning or an error");
  // What is told to the module does not wait for the next scan; the rest does.
  for (const char* name : {"Warm fault", "Cold fault", "Fans silence"}) EXPECT_GT(seconds[name], 0.8) << name;
}

TEST(BudgetMeasurement, SaysWhatKeepsItFromMeasuring) {
  TemporaryDirectory folder;
  folder.Write("EM_STATUS.ini", Configuration());
  folder.Write("other.ini", Configuration());
  folder.Write("forced/EM_STATUS.ini", Configuration());
  folder.Write("forced/EM_STATUS_simu.ini", "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n");
  const struct {
    std::string file;
    std::string limit;
    int code;
    const char* said;
  } rows[] = {
      {folder.File("other.ini"), "60", 3, "must be called EM_STATUS.ini"},
      {folder.File("forced"), "60", 3, "a simulation is in force"},
      {folder.Path().string(), "1", 3, "not measured: the time that --limit gives is over"},
      {folder.Path().string(), "0", 3, "--limit"},
  };
  for (const auto& row : rows) {
    EmhostProcess process(
        {"check-config", "--measure", "--limit", row.limit, "--module", REAL_MODULE, row.file});
    EXPECT_EQ(process.ExitCode(), row.code) << row.said;
    EXPECT_NE(process.Written().find(row.said), std::string::npos) << process.Written();
  }
}

TEST(BudgetMeasurement, VerdictsAreTold) {
  const std::vector<host::MeasuredTime> times = {
      {.component = "A", .allowed = milliseconds(1000), .taken = milliseconds(1000), .why = {}},
      {.component = "B",
       .isSilence = true,
       .allowed = milliseconds(1000),
       .taken = milliseconds(1001),
       .why = {}},
      {.component = "C", .allowed = milliseconds(1000), .taken = std::nullopt, .why = {}},
      {.component = "D", .allowed = milliseconds(1000), .taken = std::nullopt, .why = "no time"},
  };
  EXPECT_FALSE(times[0].IsOver() || times[3].IsOver());
  EXPECT_TRUE(times[1].IsOver() && times[2].IsOver());
  EXPECT_EQ(host::MeasurementText(times),
            "component  case     allowed  measured  verdict\n"
            "A          fault    1.0 s    1.0 s     within\n"
            "B          silence  1.0 s    1.0 s     over\n"
            "C          fault    1.0 s    -         over: it does not show\n"
            "D          fault    -        -         not measured: no time\n");
}

}  // namespace
}  // namespace emstatus::test
