#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "config/ConfigurationReader.h"
#include "host/configuration/UnpausedConfiguration.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::host {
namespace {

const std::string kInfo = "[Info]\nFilename=EM_STATUS.ini\nLayoutVersion=4\n";

/// As the module itself reads it.
emstatus::StatusConfiguration ReadByModule(const std::string& path) {
  emstatus::StatusConfiguration configuration;
  emstatus::ConfigurationReader reader(
      [&path](std::string& found) {
        found = path;
        return true;
      },
      [] { return false; });
  EXPECT_TRUE(reader.ReadConfigurationFile(configuration));
  return configuration;
}

TEST(UnpausedConfiguration, HasNoPauseHoweverTheyAreWritten) {
  const struct {
    const char* what;
    std::string text;
    std::size_t addedLines;
  } rows[] = {
      {"as shipped",
       "[Configuration]\nInitialPollingDelaySeconds=5\nPollingRateSeconds=10 ; often\n"
       "AdvancedPollingRateSeconds = 2\nAdvancedPollingCycles=7\n[System]\nDisplayName=S\n",
       0},
      {"only the first of each counts",
       "[Configuration]\r\n\tInitialPollingDelaySeconds=\r\n PollingRateSeconds = 10\r\n"
       "PollingRateSeconds=11\r\nAdvancedPollingRateSeconds=2\r\nAdvancedPollingCycles=7\r\n"
       "[Configuration]\nPollingRateSeconds=12\n[System]\nDisplayName=S\n",
       0},
      {"entries are missing", "[Configuration] ; x\nAdvancedPollingCycles=7\n[System]\nDisplayName=S\n", 3},
      {"a comment is no entry",
       "[Configuration]\nAdvancedPollingCycles=7\n;PollingRateSeconds=3\n[System]\nDisplayName=S\n", 3},
      {"no end of line", "[System]\nDisplayName=S\n[Configuration]\nAdvancedPollingCycles=7", 4},
      {"behind an overlong line",
       "[System]\nDisplayName=S\n[Configuration]\nAdvancedPollingCycles=7\n" + std::string(1023, ' ') +
           "PollingRateSeconds=9\n",
       3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const UnpausedConfiguration unpaused(kInfo + row.text, std::nullopt);
    const std::string path = unpaused.Folder() / "EM_STATUS.ini";
    const emstatus::StatusConfiguration read = ReadByModule(path);
    EXPECT_EQ(read.initialPollingDelay, 0);
    EXPECT_EQ(read.pollingRate, 0);
    EXPECT_EQ(read.advancedPollingRate, 0);
    EXPECT_EQ(read.advancedPollingCycles, 7);
    EXPECT_EQ(read.systemDesignation, "S");
    const auto lines = [](const std::string& text) { return std::ranges::count(text, '\n'); };
    EXPECT_EQ(lines(ReadConfigurationFile(path)), lines(kInfo + row.text) + std::ptrdiff_t(row.addedLines));
  }
  EXPECT_EQ(WithoutPauses(""),
            "[Configuration]\nInitialPollingDelaySeconds=0\nPollingRateSeconds=0\n"
            "AdvancedPollingRateSeconds=0\n");
}

TEST(UnpausedConfiguration, CopiesBothFilesAndGoes) {
  const test::TemporaryDirectory source;
  EXPECT_THROW(UnpausedConfiguration::Of(source.Path()), std::system_error);
  source.Write("EM_STATUS.ini", kInfo);
  std::string folder;
  {
    const auto unpaused = UnpausedConfiguration::Of(source.Path());
    folder = unpaused.Folder();
    EXPECT_FALSE(std::filesystem::exists(folder + "/EM_STATUS_simu.ini"));
    EXPECT_EQ(source.Read("EM_STATUS.ini"), kInfo) << "the configuration itself stays";
    struct stat status {};
    ASSERT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
  }
  EXPECT_FALSE(std::filesystem::exists(folder));
  source.Write("EM_STATUS_simu.ini", "x");
  const auto unpaused = UnpausedConfiguration::Of(source.Path());
  EXPECT_EQ(ReadConfigurationFile(unpaused.Folder() / "EM_STATUS_simu.ini"), "x");
}

}  // namespace
}  // namespace emstatus::host
