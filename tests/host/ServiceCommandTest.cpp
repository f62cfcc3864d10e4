#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "tests/host/EmhostProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

constexpr const char* kAskedScenario = R"({"format": 1, "name": "t", "rescanSeconds": 0.05, "objects": [
  {"class": "temperature", "name": "CPU", "value": 40},
  {"class": "temperature", "name": "Inlet", "story": [{"at": 1}, {"at": 2, "condition": "critical", "reason": "hot"}]}]})";

/// A running emhost, and the commands that ask it.
class ServiceCommandTest : public testing::Test {
 protected:
  ServiceCommandTest() {
    folder_.Write("etc/EM_STATUS.ini", "[StatusMapping]\nFine=1\n");
    scenario_ = folder_.Write("s.json", kAskedScenario);
  }

  std::vector<std::string> Scan(const char* command, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {command, "--module", FAKE_MODULE, "--config", folder_.File("etc"),
                               "--provider", "scenario:" + scenario_});
    return more;
  }

  /// What the command writes; it must end with `code`.
  static std::string Written(const std::vector<std::string>& arguments, int code) {
    EmhostProcess emhost(arguments);
    EXPECT_EQ(emhost.ExitCode(), code) << emhost.Written();
    return emhost.Written();
  }

  TemporaryDirectory folder_;
  std::string scenario_;
  const std::string socket_ = folder_.File("s.sock");
};

TEST_F(ServiceCommandTest, TheRunningHostIsAsked) {
  EmhostProcess host(Scan("run", {"--socket", socket_}));
  ASSERT_TRUE(host.WaitFor("Error LED: Fine -> Error\n")) << host.Written();

  const auto report = nlohmann::json::parse(Written({"json", "--socket", socket_}, 2));
  EXPECT_EQ(report["SystemStatusName"], "Error");
  EXPECT_EQ(report["Tree"]["Children"][0]["Children"][0]["Children"][1]["Object"]["Reason"], "hot");

  const std::string tree = Written({"tree", "--socket", socket_}, 2);
  EXPECT_NE(tree.find("Inlet"), std::string::npos) << tree;
  EXPECT_NE(tree.find("Error LED:     Error\n"), std::string::npos) << tree;
  EXPECT_NE(tree.find("CPU"), std::string::npos) << tree;
  EXPECT_NE(Written(Scan("tree", {"--own-scan"}), 0).find("Error LED:     Fine\n"), std::string::npos);

  const std::string events = Written({"events", "--socket", socket_}, 0);
  EXPECT_NE(events.find("Sensors, Inlet: Fine -> Error  (hot)\n"), std::string::npos) << events;
  const auto last =
      nlohmann::json::parse(Written({"events", "--json", "--last", "1", "--socket", socket_}, 0));
  EXPECT_EQ(last["Event"], "Led");
  EXPECT_EQ(last["NewName"], "Error");

  EXPECT_NE(Written(Scan("run", {"--socket", socket_}), 3).find("another emhost (process "),
            std::string::npos);

  EmhostProcess follower({"events", "--follow", "--socket", socket_});
  ASSERT_TRUE(follower.WaitFor("Error LED: Fine -> Error\n")) << follower.Written();
  EmhostProcess stopped({"events", "--follow", "--socket", socket_});
  ASSERT_TRUE(stopped.WaitFor("Error LED: Fine -> Error\n")) << stopped.Written();
  stopped.Signal(SIGINT);
  EXPECT_EQ(stopped.ExitCode(), 0) << stopped.Written();
  host.Signal(SIGTERM);
  EXPECT_EQ(host.ExitCode(), 0);
  EXPECT_EQ(follower.ExitCode(), 0);
  EXPECT_NE(follower.Written().find("the running emhost has ended"), std::string::npos) << follower.Written();
}

TEST_F(ServiceCommandTest, TheUsualSocketIsSharedPeacefully) {
  EmhostProcess first(Scan("run"));
  ASSERT_TRUE(first.WaitFor("Error LED: Fine -> Error\n")) << first.Written();
  EmhostProcess second(Scan("run"));
  EXPECT_TRUE(second.WaitFor("this one goes on without.")) << second.Written();
  EXPECT_TRUE(second.WaitFor("Error LED:")) << second.Written();
  EXPECT_NE(Written({"events"}, 0).find("Inlet: Fine -> Error"), std::string::npos);
  second.Signal(SIGTERM);
  EXPECT_EQ(second.ExitCode(), 0);
  Written({"events"}, 0);
}

TEST_F(ServiceCommandTest, WithoutOneACommandScansOrSaysSo) {
  const auto report = nlohmann::json::parse(Written(Scan("json"), 0));
  EXPECT_EQ(report["SystemStatusName"], "Fine") << "its first scan, when nothing had happened yet";
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } rows[] = {
      {{"events"}, "emhost: there is no running emhost, and only that knows what has happened."},
      {{"events", "--socket", socket_}, "no emhost answers at"},
      {{"json", "--socket", socket_}, "no emhost answers at"},
      {{"json", "--timeout", "0"}, "--timeout"},
  };
  for (const auto& row : rows) {
    const std::string written = Written(row.arguments, 3);
    EXPECT_NE(written.find(row.message), std::string::npos) << written;
  }
}

}  // namespace
}  // namespace emstatus::test
