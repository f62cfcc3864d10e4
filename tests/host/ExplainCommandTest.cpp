#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/host/EmhostProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

using Arguments = std::vector<std::string>;

constexpr const char* kServer = "scenario:" EM_SOURCE_DIR "/examples/server.json";
constexpr const char* kOneFanStopped = R"({"format": 1, "name": "t", "objects": [
 {"class": "fan", "name": "Fan 1", "unit": "RPM", "value": 4200, "redundancy": {"group": "zone", "members": 2, "needed": 1}},
 {"class": "fan", "name": "Fan 2", "unit": "RPM", "value": 0, "limits": {"lowerCritical": 600}, "advice": "replace it",
  "redundancy": {"group": "zone", "members": 2, "needed": 1}}]})";

class ExplainCommandTest : public testing::Test {
 protected:
  Arguments Scan(Arguments arguments, const std::string& provider) const {
    for (const char* more : {"--module", REAL_MODULE, "--config", EM_SOURCE_DIR "/etc", "--provider"}) {
      arguments.emplace_back(more);
    }
    arguments.push_back(provider);
    return arguments;
  }

  TemporaryDirectory folder_;
};

TEST_F(ExplainCommandTest, ExplainsAndChecksWithAScanOfItsOwn) {
  const std::string stopped = "scenario:" + folder_.Write("s.json", kOneFanStopped);
  const struct {
    Arguments arguments;
    std::string provider;
    int code;
    const char* text;
  } rows[] = {
      {{"check"}, kServer, 0, "read, oldest 0 s | 'Temperatures/Inlet'=23;~:38;~:42 '"},
      {{"check"}, stopped, 1, "WARNING - Fans, Fan 2: Error, 0 RPM, at least 600 RPM expected"},
      {{"check", "--node", "Fan 1"},
       stopped,
       0,
       "OK - Fans/Fans/Fan 1: OK, 4200 RPM | 'Fans/Fan 1'=4200;;;0\n"},
      {{"check", "--subsystem", "Storage"}, stopped, 3, "UNKNOWN - there is no node \"Storage\""},
      {{"explain", "Fan 2"}, stopped, 0, "\n  Rule          EM_STATUS.ini:"},
      {{"explain"}, stopped, 0, "Server Error > Fans Warning > Fans Error > Fan 2 Error\n"},
      {{"explain", "Disk 1"}, kServer, 3, "\"Disk 1\" names 2 nodes:\n  Storage/Disks/Disk 1  (id "},
      {{"explain", "Component.RaidMembers"},
       kServer,
       0,
       "\n  Redundancy    tolerates 1 more failure (md0)\n"},
  };
  for (const auto& row : rows) {
    EmhostProcess emhost(Scan(row.arguments, row.provider));
    EXPECT_EQ(emhost.ExitCode(), row.code) << emhost.Written();
    EXPECT_NE(emhost.Written().find(row.text), std::string::npos) << row.text << "\nnot in\n"
                                                                  << emhost.Written();
  }
}

TEST_F(ExplainCommandTest, CheckTellsNoStatusInAnyFailure) {
  const struct {
    Arguments arguments;
    const char* text;
  } rows[] = {
      {{"check", "--help"}, "Usage: emhost check"},
      {{"check", "--version"}, "emhost "},
      {{"check", "--bogus"}, "UNKNOWN - The following argument was not expected: --bogus"},
      {{"check", "--socket", folder_.File("none")}, "UNKNOWN - no emhost answers at "},
      {{"check", "--config", "/no/such"}, "UNKNOWN - there is no EM_STATUS.ini in /no/such"},
  };
  for (const auto& row : rows) {
    EmhostProcess emhost(row.arguments);
    EXPECT_EQ(emhost.ExitCode(), 3) << emhost.Written();
    EXPECT_NE(emhost.Written().find(row.text), std::string::npos) << emhost.Written();
  }
}

TEST_F(ExplainCommandTest, CheckEndsInTime) {
  const std::string silent = "scenario:" + folder_.Write("s.json", R"({"format": 1, "name": "t", "objects": [
   {"class": "fan", "name": "Fan 1", "answers": [{"delaySeconds": 600}]}]})");
  EmhostProcess emhost(Scan({"check", "-t", "1"}, silent));
  EXPECT_EQ(emhost.ExitCode(), 3);
  EXPECT_EQ(emhost.Written(), "UNKNOWN - no report of emhost within the time-out\n");
}

TEST_F(ExplainCommandTest, AskTheRunningEmhostSinceWhen) {
  const std::string story =
      "scenario:" + folder_.Write("s.json", R"({"format": 1, "name": "t", "rescanSeconds": 0.05,
   "objects": [{"class": "fan", "name": "Fan 1", "story": [{"at": 1}, {"at": 3, "condition": "critical", "reason": "x"}]},
               {"class": "fan", "name": "Fan 2"}]})");
  const std::string socket = folder_.File("socket");
  EmhostProcess host(Scan({"run", "--socket", socket}, story));
  ASSERT_TRUE(host.WaitFor("Fan 1: OK -> Error")) << host.Written();
  EmhostProcess explain({"explain", "--json", "--socket", socket, "Fans"});
  EXPECT_EQ(explain.ExitCode(), 0) << explain.Written();
  const auto json = nlohmann::json::parse(explain.Written());
  EXPECT_TRUE(json["Causes"][0].contains("Since")) << explain.Written();
  EXPECT_EQ(json["Causes"][0]["Rule"]["Key"], "Status.Failed");
  EmhostProcess check({"check", "--socket", socket, "--subsystem", "Fans"});
  EXPECT_EQ(check.ExitCode(), 2) << check.Written();
  EXPECT_TRUE(check.Written().starts_with("CRITICAL - Fans, Fan 1: Error, x")) << check.Written();
  EmhostProcess good({"explain", "--json", "--socket", socket, "Fan 2"});
  EXPECT_EQ(good.ExitCode(), 0);
  EXPECT_FALSE(nlohmann::json::parse(good.Written())["Node"].contains("Since"))
      << "so from the first scan on";
}

TEST_F(ExplainCommandTest, IcingaTakesTheCommand) {
  constexpr const char* kIcinga = "/usr/sbin/icinga2";
  if (access(kIcinga, X_OK) != 0 || geteuid() != 0) {
    GTEST_SKIP() << "icinga2 is not installed, or this is not root, as whom it starts";
  }
  std::ifstream shipped(EM_SOURCE_DIR "/etc/icinga2/emhost.conf");
  const std::string command{std::istreambuf_iterator<char>(shipped), {}};
  const std::string file =
      folder_.Write("icinga2.conf",
                    "include <itl>\n" + command + "object Host \"server\" { check_command = \"emhost\" }\n");
  // It reads as a user of its own.
  std::filesystem::permissions(folder_.Path(), std::filesystem::perms(0755));
  EXPECT_EQ(std::system((std::string(kIcinga) + " daemon -C -c " + file).c_str()), 0);
}

}  // namespace
}  // namespace emstatus::test
