#include "config/ConfigurationReader.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

constexpr const char* kIdentity = "[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=4\n";

struct Outcome {
  bool usable;
  StatusConfiguration configuration;
};

Outcome Read(const std::string& text) {
  const TemporaryDirectory folder;
  const std::string file = folder.Write("EM_STATUS.ini", text);
  ConfigurationReader reader(
      [&file](std::string& path) {
        path = file;
        return true;
      },
      [] { return false; });
  Outcome outcome;
  outcome.usable = reader.ReadConfigurationFile(outcome.configuration);
  return outcome;
}

TEST(ConfigurationReaderTest, RefusesWhatIsNoConfiguration) {
  const struct {
    const char* text;
    bool usable;
  } rows[] = {
      {kIdentity, true},
      {"[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=04\n", true},
      {"[Info]\nFilename=EM_STATUS.INI\nLayoutVersion=4\n", false},
      {"[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=3\n", false},
      {"[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=5\n", false},
      {"[Info]\nFilename=EM_STATUS.ini\n", false},
      {"[Info]\nLayoutVersion=4\n", false},
      {"", false},
  };
  for (const auto& row : rows) EXPECT_EQ(Read(row.text).usable, row.usable) << row.text;
}

TEST(ConfigurationReaderTest, WithoutAFileEverySettingHasItsDefault) {
  ConfigurationReader reader([](std::string&) { return false; }, [] { return true; });
  StatusConfiguration found;
  EXPECT_TRUE(reader.ReadConfigurationFile(found));
  EXPECT_EQ(found.initialPollingDelay, 60);
  EXPECT_EQ(found.pollingRate, 60);
  EXPECT_EQ(found.advancedPollingRate, 15);
  EXPECT_EQ(found.advancedPollingCycles, 30);
  EXPECT_EQ(found.queryFailStatus, NoStatus);
  EXPECT_TRUE(found.subsystems.empty());
}

TEST(ConfigurationReaderTest, AFileThatIsGoneIsAnError) {
  ConfigurationReader reader(
      [](std::string& path) {
        path = "/nonexistent/EM_STATUS.ini";
        return true;
      },
      [] { return false; });
  StatusConfiguration found;
  EXPECT_FALSE(reader.ReadConfigurationFile(found));
}

TEST(ConfigurationReaderTest, ReadsSettingsNamesAndVariables) {
  const auto [usable, found] = Read(
      std::string(kIdentity) +
      "[Configuration]\nInitialPollingDelaySeconds=1\nPollingRateSeconds=0x10\nAdvancedPollingRateSeconds=010\n"
      "AdvancedPollingCycles=-1\nStatusValueQueryFail=258\nStatusValueUndefinedMapping=3\n"
      "[StatusMapping]\nOK=1\nGood=1\nBad=256\nLast=-1\nTop=255\nText=abc\n"
      "[EnvironmentVariables]\nC=1\nD=2\n[EnvironmentVariables.Linux]\nC=7\n"
      "[System]\nDisplayName=A system\nSubsystems=  S   T\n"
      "[Subsystem.S]\nDisplayName=Ess\nComponents= A  B\n[Subsystem.T]\nDisplayName=Tee\nComponents=none\n"
      "[Component.A]\nDisplayName=a\nStatusRequest=<CMD Context=\"TRIQ\" OC=\"%C%%D%\"/>\nStatus.1=OK 1\n"
      "[Component.A.alt]\nDisplayName=b\nStatus.1=OK 1\n"
      "[Component.B]\nDisplayNameRequest=<CMD/>\nDisplayName=ignored\nInstanceName=N\nRedundancy.x=2;7\n");
  ASSERT_TRUE(usable);
  EXPECT_EQ(found.initialPollingDelay, 1);
  EXPECT_EQ(found.pollingRate, 16);
  EXPECT_EQ(found.advancedPollingRate, 8);
  EXPECT_EQ(found.advancedPollingCycles, -1);
  EXPECT_EQ(found.queryFailStatus, 2);
  EXPECT_EQ(found.undefinedMappingStatus, 3);
  EXPECT_STREQ(found.StatusName(1), "Good");
  EXPECT_EQ(found.statusValues.at("OK"), 1);
  EXPECT_EQ(found.statusValues.at("Last"), 255);
  EXPECT_STREQ(found.StatusName(255), "Top");
  EXPECT_EQ(found.statusValues.at("Text"), 0);
  EXPECT_FALSE(found.statusValues.contains("Bad"));
  EXPECT_EQ(found.systemDesignation, "A system");
  ASSERT_EQ(found.subsystems.size(), 2U);
  EXPECT_EQ(found.subsystems[0].componentNames, std::vector<std::string>{"A"}) << "B has no map entry";
  EXPECT_TRUE(found.subsystems[1].componentNames.empty());
  const ComponentDefinition* a = found.FindComponent("A");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->statusRequest.command.Attribute("OC"), "72");
  EXPECT_TRUE(a->hasAlternative);
  EXPECT_EQ(a->instanceName, "A");
  EXPECT_EQ(a->category, Category::Optional);
  EXPECT_TRUE(a->enabled);
  EXPECT_NE(found.FindComponent("A.alt"), nullptr);
  EXPECT_EQ(found.ComponentAt(0, 0), a);
  EXPECT_EQ(found.ComponentAt(0, 1), nullptr);
  EXPECT_EQ(found.ComponentAt(2, 0), nullptr);
}

}  // namespace
}  // namespace emstatus::test
