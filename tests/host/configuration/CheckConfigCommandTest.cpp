#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/configuration/IniFile.h"
#include "tests/host/EmhostProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

TEST(CheckConfigCommand, TellsByItsExitCode) {
  const std::string good = host::ReadFileText(EM_SOURCE_DIR "/tests/data/configurations/good.ini");
  TemporaryDirectory folder;
  const std::string file = folder.Write("EM_STATUS.ini", good);
  folder.Write("noted/EM_STATUS.ini", good + "Status.Seven=Error 7\n");
  folder.Write("warned/EM_STATUS.ini", good + "Status.Good=Error 7\n");
  folder.Write("forced/EM_STATUS.ini", good);
  folder.Write("forced/EM_STATUS_simu.ini", "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n");
  const struct {
    std::string file;
    int code;
    std::string said;
  } rows[] = {
      {file, 0, file + ": no problems\n"},
      {folder.Path().string(), 0, file + ": no problems\n"},
      {folder.File("noted"), 0, "EM_STATUS.ini:39: note: Status.Seven"},
      {folder.File("warned"), 1, "EM_STATUS.ini:39: warning: Status.Good"},
      {folder.File("forced"), 1, "EM_STATUS_simu.ini:4: warning: Active"},
      {folder.File("nowhere"), 3, "nowhere: No such file"},
      {"", 0, "no problems"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> arguments = {"check-config"};
    if (!row.file.empty()) arguments.push_back(row.file);
    EmhostProcess process(arguments);
    EXPECT_EQ(process.ExitCode(), row.code) << row.file;
    EXPECT_NE(process.Written().find(row.said), std::string::npos) << process.Written();
  }
}

TEST(CheckConfigCommand, WritesJson) {
  TemporaryDirectory folder;
  const std::string file = folder.Write("EM_STATUS.ini", "[Info]\nFilename=\xff\n");
  EmhostProcess process({"check-config", "--json", file});
  EXPECT_EQ(process.ExitCode(), 1);
  const auto json = nlohmann::json::parse(process.Written());
  EXPECT_EQ(json.at("File"), file);
  EXPECT_EQ(json.at("Problems").at(0).at("Severity"), "error");
}

}  // namespace
}  // namespace emstatus::test
