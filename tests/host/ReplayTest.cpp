#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/configuration/UnpausedConfiguration.h"
#include "host/recording/GzipFile.h"
#include "tests/host/EmhostProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

/// The recording of a server that degrades, fails and is repaired, with the shipped configuration.
class ReplayTest : public testing::Test {
 protected:
  ReplayTest() {
    const std::string shipped = host::ReadConfigurationFile(EM_SOURCE_DIR "/etc/EM_STATUS.ini");
    folder_.Write("etc/EM_STATUS.ini", host::WithoutPauses(shipped));
  }

  struct Outcome {
    int code = -1;
    std::string text;
  };

  static Outcome Emhost(std::vector<std::string> arguments) {
    EmhostProcess emhost(std::move(arguments));
    Outcome outcome;
    outcome.code = emhost.ExitCode();
    outcome.text = emhost.Written();
    return outcome;
  }

  std::vector<std::string> RecordArguments(const std::string& file, std::vector<std::string> more) const {
    std::vector<std::string> arguments{"record",     file,
                                       "--module",   REAL_MODULE,
                                       "--config",   folder_.File("etc"),
                                       "--provider", "scenario:" EM_SOURCE_DIR "/examples/server.json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }

  Outcome Record(const std::string& file, std::vector<std::string> more) const {
    return Emhost(RecordArguments(file, std::move(more)));
  }

  static Outcome Replay(const std::string& file, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"replay", file, "--module", REAL_MODULE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Emhost(std::move(arguments));
  }

  static std::string Unpacked(const std::string& file) {
    host::GzipLines lines(file);
    std::string text;
    for (std::string line; lines.Next(line);) {
      text += line + "\n";
    }
    return text;
  }

  static std::string Replaced(std::string text, const std::string& what, const std::string& by) {
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? text : text.replace(at, what.size(), by);
  }

  TemporaryDirectory folder_;
};

TEST_F(ReplayTest, AServersStoryReplaysToTheLetter) {
  const std::string file = folder_.File("r.gz");
  const Outcome recorded = Record(file, {"--scans", "14"});
  ASSERT_EQ(recorded.code, 0) << recorded.text;
  EXPECT_NE(recorded.text.find("Fans, Fan 2: Warning -> Error  (0 RPM"), std::string::npos) << recorded.text;
  EXPECT_NE(recorded.text.find("recorded 14 scans in " + file), std::string::npos) << recorded.text;
  const Outcome refused = Record(file, {"--scans", "1"});
  EXPECT_EQ(refused.code, 3);
  EXPECT_NE(refused.text.find("is there already"), std::string::npos) << refused.text;

  const Outcome replayed = Replay(file);
  EXPECT_EQ(replayed.code, 0) << replayed.text;
  EXPECT_TRUE(replayed.text.starts_with("identical: 14 scans, ")) << replayed.text;

  const Outcome shown = Replay(file, {"--at", "7", "--json"});
  EXPECT_EQ(shown.code, 0) << shown.text;
  EXPECT_EQ(nlohmann::json::parse(shown.text)["SystemStatus"], 3) << shown.text;
  EXPECT_NE(Replay(file, {"--at", "7"}).text.find("0 RPM, at least 500 RPM expected"), std::string::npos);

  EXPECT_TRUE(Replay(file, {"--at", "2199-01-01T00:00:00Z"}).text.starts_with("Scan 14, "));
  const Outcome behind = Replay(file, {"--at", "15"});
  EXPECT_EQ(behind.code, 3);
  EXPECT_NE(behind.text.find("the recording ends with scan 14"), std::string::npos) << behind.text;

  // What was recorded otherwise is noticed, each of its kinds.
  const std::string text = Unpacked(file);
  const struct {
    const char* what;
    const char* by;
    const char* difference;
  } rows[] = {
      {"\"status\":3,\"led\":131}", "\"status\":2,\"led\":131}", "scan 6, "},
      {"\"status\":3,\"led\":131}", "\"status\":3,\"led\":3}",
       "Error LED: recorded Error, replayed Error, the customer can mend it"},
      {"{\"tree\":{\"SystemStatusTree\":{},\"Version\":1,\"Id\":\"root\",\"Desig\":\"Server\",\"Status\":1",
       "{\"tree\":{\"SystemStatusTree\":{},\"Version\":1,\"Id\":\"root\",\"Desig\":\"Server\",\"Status\":2",
       "Server: Status: recorded 2 Warning, replayed 1 OK"},
      {"{\"event\":\"230F-0000-0000-0000\",\"data\":1", "{\"event\":\"230F-0000-0000-0000\",\"data\":3",
       "Event System: recorded 3 Error, replayed none"},
  };
  for (const auto& row : rows) {
    const Outcome changed = Replay(folder_.Write("changed", Replaced(text, row.what, row.by)));
    EXPECT_EQ(changed.code, 1) << changed.text;
    EXPECT_NE(changed.text.find(row.difference), std::string::npos) << changed.text;
  }
}

TEST_F(ReplayTest, WhatWasInterruptedReplaysUpToThere) {
  const std::string file = folder_.File("r.gz");
  {
    EmhostProcess emhost(RecordArguments(file, {}));
    ASSERT_TRUE(emhost.WaitFor("Fans, Fan 2: Warning -> Error")) << emhost.Written();
    emhost.Signal(SIGKILL);
    EXPECT_EQ(emhost.ExitCode(), -1);
  }
  const Outcome replayed = Replay(file);
  EXPECT_EQ(replayed.code, 0) << replayed.text;
  EXPECT_NE(replayed.text.find("it was interrupted or cut"), std::string::npos) << replayed.text;
  EXPECT_NE(replayed.text.find("identical: "), std::string::npos) << replayed.text;

  EmhostProcess emhost(RecordArguments(folder_.File("stopped.gz"), {}));
  ASSERT_TRUE(emhost.WaitFor("Fans, Fan 2: Warning -> Error")) << emhost.Written();
  emhost.Signal(SIGINT);
  EXPECT_EQ(emhost.ExitCode(), 0) << emhost.Written();
  const Outcome stopped = Replay(folder_.File("stopped.gz"));
  EXPECT_TRUE(stopped.text.starts_with("identical: ")) << "a stop is no interruption: " << stopped.text;
}

TEST_F(ReplayTest, FailuresSayWhatAndWhere) {
  std::filesystem::create_symlink("/dev/full", folder_.File("full"));
  const Outcome full = Record(folder_.File("full"), {"--force"});
  EXPECT_EQ(full.code, 3);
  EXPECT_NE(full.text.find("full: No space left on device"), std::string::npos) << full.text;
  EXPECT_TRUE(std::filesystem::is_character_file(folder_.File("full"))) << "a device is removed";

  const Outcome noModule = Emhost({"record", folder_.File("none.gz"), "--module", "/no/such.so"});
  EXPECT_EQ(noModule.code, 3) << noModule.text;
  EXPECT_FALSE(std::filesystem::exists(folder_.File("none.gz"))) << "an empty recording is left behind";

  const Outcome foreign = Replay(folder_.Write("foreign", "[Info]\n"));
  EXPECT_EQ(foreign.code, 3);
  EXPECT_NE(foreign.text.find("foreign, line 1: this is no recording"), std::string::npos) << foreign.text;
}

TEST_F(ReplayTest, ASimulationIsPartOfTheRecording) {
  folder_.Write(
      "etc/EM_STATUS_simu.ini",
      "[Info]\nFilename=EM_STATUS_simu.ini\n[Config]\nActive=1\n[Components]\nFan0-0.MappedStatus=3\n");
  const std::string file = folder_.File("r.gz");
  {
    EmhostProcess emhost(RecordArguments(file, {}));
    ASSERT_TRUE(emhost.WaitFor("Error LED:     ")) << emhost.Written();
    ASSERT_NE(emhost.Written().find("Fan 1                                   Error (simulated)"),
              std::string::npos)
        << emhost.Written();
    folder_.Write("etc/EM_STATUS_simu.ini", "gone\n");
    ASSERT_TRUE(emhost.WaitFor("Fans, Fan 1: Error -> OK")) << emhost.Written();
    emhost.Signal(SIGINT);
    EXPECT_EQ(emhost.ExitCode(), 0);
  }
  std::filesystem::remove(folder_.File("etc/EM_STATUS_simu.ini"));
  const Outcome replayed = Replay(file);
  EXPECT_EQ(replayed.code, 0) << replayed.text;
}

TEST_F(ReplayTest, CompareFindsAChangedMapEntry) {
  const std::string file = folder_.File("r.gz");
  ASSERT_EQ(Record(file, {"--scans", "10"}).code, 0);
  const std::string before = folder_.Read("etc/EM_STATUS.ini");
  const std::size_t fans = before.find("[Component.Fans]");
  ASSERT_NE(fans, std::string::npos);
  const std::string changed = before.substr(0, fans) + Replaced(before.substr(fans), "Error 2", "Warning 2");
  const std::string other = folder_.Write("other.ini", changed);

  const Outcome same = Emhost(
      {"compare", folder_.File("etc"), folder_.File("etc/EM_STATUS.ini"), file, "--module", REAL_MODULE});
  EXPECT_EQ(same.code, 0) << same.text;
  EXPECT_EQ(same.text, "the same in 10 scans\n");

  const Outcome differs =
      Emhost({"compare", folder_.File("etc"), other, file, "--module", REAL_MODULE, "--json"});
  EXPECT_EQ(differs.code, 1) << differs.text;
  const auto json = nlohmann::json::parse(differs.text);
  bool node = false;
  bool event = false;
  for (const auto& entry : json["Disagreements"]) {
    node = node || (entry["What"] == "Server > Fans > Fans > Fan 2" && entry["Old"] == "3 Error" &&
                    entry["New"] == "2 Warning" && entry["FirstScan"] == 7);
    event = event || (entry["What"].get<std::string>().starts_with("Event Fans/Fans/") &&
                      entry["Old"] == "3 Error" && entry["New"].is_null());
  }
  EXPECT_TRUE(node && event) << differs.text;
  EXPECT_EQ(Emhost({"compare", folder_.File("etc"), "/no/such", file, "--module", REAL_MODULE}).code, 3);
}

}  // namespace
}  // namespace emstatus::test
