#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include <nlohmann/json.hpp>

#include "host/view/FaultTable.h"
#include "tests/host/EmhostProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using namespace host;

constexpr const char* kFolder = EM_SOURCE_DIR "/tests/data/faults";

std::vector<std::string> FaultsArguments(const std::string& configuration,
                                         std::vector<std::string> more = {}) {
  std::vector<std::string> arguments{"faults",
                                     "--module",
                                     REAL_MODULE,
                                     "--config",
                                     configuration,
                                     "--provider",
                                     std::string("scenario:") + kFolder + "/scenario.json"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

TEST(FaultsCommand, TableIsAsItWas) {
  EmhostProcess emhost(FaultsArguments(kFolder));
  EXPECT_EQ(emhost.ExitCode(), 1) << "lost disks are mapped to good";
  std::ifstream stream(std::string(kFolder) + "/table.txt");
  const std::string expected{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_EQ(emhost.Written(), expected)
      << "when it is right now: emhost faults ... > tests/data/faults/table.txt";
}

TEST(FaultsCommand, SimulationBesideTheConfigurationDoesNotCount) {
  TemporaryDirectory folder;
  std::filesystem::copy(std::string(kFolder) + "/EM_STATUS.ini", folder.File("EM_STATUS.ini"));
  folder.Write(
      "EM_STATUS_simu.ini",
      "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n[Components]\nSwapUse.MappedStatus=3\n");
  EmhostProcess emhost(FaultsArguments(folder.Path(), {"--component", "SwapUse", "--json"}));
  EXPECT_EQ(emhost.ExitCode(), 0) << emhost.Written();
  const auto json = nlohmann::json::parse(emhost.Written());
  EXPECT_EQ(json["Good"]["SystemStatusName"], "OK");
  ASSERT_EQ(json["Rows"].size(), 2U);
  const auto& row = json["Rows"][0];
  EXPECT_EQ(row["Faults"], nlohmann::json::array({"beyond limit", "no answer"}));
  EXPECT_EQ(row["SystemStatus"], 3);
  EXPECT_EQ(row["ExitCode"], 2);
  EXPECT_EQ(row["Events"]["SystemStatus"], 1);
  EXPECT_EQ(row["Ends"], true);
}

TEST(FaultsCommand, SaysWhatKeepsItFromTheTable) {
  const struct {
    std::string configuration;
    std::vector<std::string> more;
    const char* message;
  } rows[] = {
      {kFolder, {"--component", "Fanz"}, "no component with parts is called Fanz"},
      {"/nowhere", {}, "there is no EM_STATUS.ini in /nowhere"},
      {kFolder, {"--provider", "none"}, "--provider"},
  };
  for (const auto& row : rows) {
    EmhostProcess emhost(FaultsArguments(row.configuration, row.more));
    EXPECT_EQ(emhost.ExitCode(), 3) << row.message;
    EXPECT_NE(emhost.Written().find(row.message), std::string::npos) << emhost.Written();
  }
}

TEST(FaultsCommand, EndsAtOnceOnASignal) {
  TemporaryDirectory folder;
  std::ifstream stream(std::string(kFolder) + "/EM_STATUS.ini");
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  const std::string cycles = "AdvancedPollingCycles=3";
  // Long enough for the signal to come first.
  text.replace(text.find(cycles), cycles.size(), "AdvancedPollingCycles=100000");
  folder.Write("EM_STATUS.ini", text);
  EmhostProcess emhost(FaultsArguments(folder.Path(), {"--trace", "1"}));
  ASSERT_TRUE(emhost.WaitFor("polling thread started")) << emhost.Written();
  emhost.Signal(SIGINT);
  EXPECT_EQ(emhost.ExitCode(), 3);
  EXPECT_NE(emhost.Written().find("stopped before"), std::string::npos) << emhost.Written();
}

TEST(FaultTable, FaultsOfOneEffectAreOneRow) {
  FaultTable table;
  const FaultPlace fan{"Cooling", "Fans", "Component.Fans", "Fan 1", {ObjectClass::Fan, 0, 0}};
  FaultEffect warns;
  warns.part = 2;
  warns.shows = true;
  FaultEffect stays = warns;
  stays.ends = false;
  const FaultEffect nothing;
  AddFault(table, fan, Fault::Warning, warns);
  AddFault(table, fan, Fault::Failed, stays);
  AddFault(table, fan, Fault::Late, warns);
  AddFault(table, fan, Fault::Lost, nothing);
  AddFault(table, fan, Fault::NoAnswer, nothing);
  ASSERT_EQ(table.rows.size(), 4U) << "not being answered for is a row of its own when nothing changes";
  EXPECT_EQ(table.rows[0].faults, (std::vector{Fault::Warning, Fault::Late}));
  const bool wrong[] = {false, true, true, false};
  for (std::size_t row = 0; row < std::size(wrong); ++row) {
    EXPECT_EQ(table.rows[row].IsWrong(), wrong[row]) << row;
  }
  table.neverGood = {"Cooling, Pump: Warning"};
  table.notForced = {"Cooling, Flow"};
  const std::string text = FaultTableText(table, StatusWords(), false);
  for (const char* line :
       {"Not good even then:\n  Cooling, Pump: Warning\n", "were not made to fail:\n  Cooling, Flow\n",
        "These faults change nothing:\n  Cooling, Fans, Fan 1: lost\n",
        "These faults do not end:\n  Cooling, Fans, Fan 1: failed\n"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
  }
}

}  // namespace
}  // namespace emstatus::test
