#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "tests/host/EmhostProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

/// Scans only once by itself: what follows is emhost's doing.
constexpr const char* kConfiguration = R"([Info]
Filename=EM_STATUS.ini
LayoutVersion=4
[Configuration]
InitialPollingDelaySeconds=0
PollingRateSeconds=600
AdvancedPollingRateSeconds=600
AdvancedPollingCycles=5
[StatusMapping]
OK=1
Warning=2
Error=3
[System]
DisplayName=Server
Subsystems=Fans
[Subsystem.Fans]
DisplayName=Cooling
Components=Fans Inlet
[Component.Fans]
DisplayName=Fans
InstanceName=Fan
HandleCabinets=1
StatusRequest=<CMD Context="TRIQ" OC="0102" OE="0002" OI="0000"/>
NrInstancesRequest=<CMD Context="TRIQ" OC="0102" OE="0001"/>
DesignationRequest=<CMD Context="TRIQ" OC="0102" OE="0003" OI="0000"/>
Status.Good=OK 0
Status.Bad=Error 2
[Component.Inlet]
DisplayName=Inlet
StatusRequest=<CMD Context="TRIQ" OC="0101" OE="0002" OI="0000"/>
Status.Good=OK 0
Status.Bad=Warning 2
)";

constexpr const char* kScenario = R"({"format": 1, "name": "t", "objects": [
  {"class": "temperature", "name": "Inlet", "unit": "°C", "value": 23},
  {"class": "fan", "name": "Front"}, {"class": "fan", "name": "Rear"}, {"class": "fan", "name": "Side"}]})";

class SimulateCommandTest : public testing::Test {
 protected:
  SimulateCommandTest() {
    folder_.Write("etc/EM_STATUS.ini", kConfiguration);
    scenario_ = "scenario:" + folder_.Write("s.json", kScenario);
  }

  std::vector<std::string> Run(const std::vector<std::string>& more) const {
    std::vector<std::string> arguments{"run",        "--module", REAL_MODULE, "--config", folder_.File("etc"),
                                       "--provider", scenario_};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }

  /// What emhost simulate writes; it must end with `code`.
  std::string Simulate(const std::vector<std::string>& more, int code = 0) const {
    std::vector<std::string> arguments{"simulate", "--config", folder_.File("etc")};
    arguments.insert(arguments.end(), more.begin(), more.end());
    EmhostProcess emhost(arguments);
    EXPECT_EQ(emhost.ExitCode(), code) << emhost.Written();
    return emhost.Written();
  }

  bool HasFile(const char* name = "etc/EM_STATUS_simu.ini") const {
    return std::filesystem::exists(folder_.File(name));
  }

  TemporaryDirectory folder_;
  std::string scenario_;
};

TEST_F(SimulateCommandTest, ARunningHostFollowsOnChangedAndOff) {
  EmhostProcess emhost(Run({}));
  ASSERT_TRUE(emhost.WaitFor("Error LED:     OK\n")) << emhost.Written();

  Simulate({"Fan1=Error", "Inlet.ObjectStatus=2"});
  ASSERT_TRUE(emhost.WaitFor("Fans, Rear: OK -> Error (simulated)\n")) << emhost.Written();
  ASSERT_TRUE(emhost.WaitFor("System: OK -> Error (parts are simulated)\n")) << emhost.Written();
  EXPECT_NE(emhost.Written().find(": Fan1 Error, Inlet object status 2\n"), std::string::npos);

  const std::string replaced = Simulate({"Fan1=Warning", "Fan9=OK"});
  EXPECT_NE(replaced.find("This replaces what was simulated until "), std::string::npos) << replaced;
  EXPECT_NE(replaced.find("keeps, until this ends: Inlet object status 2.\n"), std::string::npos) << replaced;
  ASSERT_TRUE(emhost.WaitFor("Fans, Rear: Error -> Warning (simulated)\n")) << emhost.Written();
  EXPECT_NE(emhost.Written().find(
                ": Fan1 Warning, Fan9 OK (not in the tree), Inlet object status 2 (still, from before)\n"),
            std::string::npos)
      << emhost.Written();

  Simulate({"--clear"});
  ASSERT_TRUE(emhost.WaitFor("Nothing is simulated any more\n")) << emhost.Written();
  ASSERT_TRUE(emhost.WaitFor("Fans, Rear: Warning -> OK\n")) << emhost.Written();
  ASSERT_TRUE(emhost.WaitFor("Warning -> OK\n")) << emhost.Written();

  Simulate({"Fan2=Error", "--for", "1s"});
  ASSERT_TRUE(emhost.WaitFor("Fans, Side: OK -> Error (simulated)\n")) << emhost.Written();
  ASSERT_TRUE(emhost.WaitFor("Fans, Side: Error -> OK\n"))
      << "it does not end by itself: " << emhost.Written();
  EXPECT_FALSE(HasFile());

  // Other hands, other means.
  folder_.Write(
      "etc/EM_STATUS_simu.ini",
      "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n[Components]\nFan0.MappedStatus=3\n");
  ASSERT_TRUE(emhost.WaitFor("Fans, Front: OK -> Error (simulated)\n")) << emhost.Written();
  EXPECT_NE(emhost.Written().find("Simulated without end, by a file written by hand: Fan0 Error, "),
            std::string::npos);
  emhost.Signal(SIGTERM);
  EXPECT_EQ(emhost.ExitCode(), 0);
  EXPECT_TRUE(HasFile()) << "what has no end is not emhost's to end";
}

TEST_F(SimulateCommandTest, OnceMarksAndNeverShowsWhatIsOver) {
  Simulate({"Fan1=Error", "Inlet=Warning", "--for", "1h"});
  EmhostProcess text(Run({"--once"}));
  EXPECT_EQ(text.ExitCode(), 2) << text.Written();
  EXPECT_NE(text.Written().find("Rear   Error (simulated)\n"), std::string::npos) << text.Written();
  EXPECT_NE(text.Written().find("Inlet    Warning (simulated)  23 °C\n"), std::string::npos)
      << text.Written();
  EXPECT_NE(text.Written().find("\nSimulated until "), std::string::npos) << text.Written();

  EmhostProcess json(Run({"--once", "--json"}));
  EXPECT_EQ(json.ExitCode(), 2) << json.Written();
  const auto report = nlohmann::json::parse(json.Written());
  const auto& fans = report["Tree"]["Children"][0]["Children"][0]["Children"];
  EXPECT_EQ(fans[1]["Simulated"], true) << json.Written();
  EXPECT_FALSE(fans[0].contains("Simulated")) << json.Written();
  EXPECT_EQ(report["Simulation"]["Parts"][0]["Name"], "Fan1");

  const std::string file = folder_.Read("etc/EM_STATUS_simu.ini");
  const std::size_t until = file.find("Until=") + 6;
  folder_.Write("etc/EM_STATUS_simu.ini", file.substr(0, until) + "2001-01-01T00:00:00Z\n");
  EXPECT_NE(Simulate({}).find("That is over."), std::string::npos);
  EmhostProcess over(Run({"--once"}));
  EXPECT_EQ(over.ExitCode(), 0) << over.Written();
  EXPECT_FALSE(HasFile());
}

TEST_F(SimulateCommandTest, SaysWhatItDoes) {
  EXPECT_EQ(Simulate({}), "Nothing is simulated.\n");
  EXPECT_EQ(Simulate({"--clear"}), "Nothing was simulated.\n");
  EXPECT_EQ(Simulate({"Inlet=Error", "--for", "ever"}), "Simulated for ever: Inlet Error\n");
  EXPECT_EQ(Simulate({}), "Simulated for ever: Inlet Error\n");
  EXPECT_NE(Simulate({"Inlet.IsCss=1"}).find("Give it with Inlet=STATUS."), std::string::npos);
  EXPECT_EQ(Simulate({"--clear"}), "No longer simulated: Inlet NoStatus (CSS)\n");
  EXPECT_FALSE(HasFile());

  folder_.Write("etc/EM_STATUS_simu.ini", "; mine\n");
  EXPECT_NE(Simulate({}).find("is not switched on, or no simulation file"), std::string::npos);
  EXPECT_NE(Simulate({"Fan1-0=OK"}).find("kept as " + folder_.File("etc/EM_STATUS_simu.ini.saved")),
            std::string::npos);
  EXPECT_EQ(folder_.Read("etc/EM_STATUS_simu.ini.saved"), "; mine\n");

  const std::string before = folder_.Read("etc/EM_STATUS_simu.ini");
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } rows[] = {
      {{"Fans=OK"}, "emhost: \"Fans\" has instances; name one of them: Fan0, Fan1, ...\n"},
      {{"Fan1=OK", "inlet=OK"}, "nearest are Inlet"},
      {{"Fan1=OK", "--for", "10"}, "90s, 10m, 2h"},
      {{"Fan1=OK", "--clear"}, "--clear"},
      {{"--for", "1m"}, "--for requires"},
  };
  for (const auto& row : rows) {
    const std::string written = Simulate(row.arguments, 3);
    EXPECT_NE(written.find(row.message), std::string::npos) << written;
  }
  EXPECT_EQ(folder_.Read("etc/EM_STATUS_simu.ini"), before) << "what is refused changes nothing";
}

}  // namespace
}  // namespace emstatus::test
