#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include <nlohmann/json.hpp>

#include "tests/host/EmhostProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {
namespace {

class EmhostTest : public testing::Test {
 protected:
  EmhostTest() { folder_.Write("etc/EM_STATUS.ini", "[StatusMapping]\nFine=1\n"); }

  std::vector<std::string> Arguments(const std::string& objects, std::vector<std::string> more,
                                     const std::string& time = "") {
    const std::string scenario =
        folder_.Write("s.json", R"({"format": 1, "name": "t", )" + time + R"("objects": [)" + objects + "]}");
    std::vector<std::string> arguments{"run",
                                       "--module",
                                       FAKE_MODULE,
                                       "--config",
                                       folder_.File("etc"),
                                       "--provider",
                                       "scenario:" + scenario};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }

  TemporaryDirectory folder_;
};

TEST_F(EmhostTest, OnceShowsTheTreeAndExitsByTheStatus) {
  const struct {
    const char* objects;
    int code;
    const char* line;
  } rows[] = {
      {R"({"class": "temperature", "name": "Inlet", "unit": "°C", "value": 23})", 0,
       "      Inlet     Fine  23 °C\n"},
      {R"({"class": "temperature", "name": "a"}, {"class": "temperature", "name": "b", "condition": "warning",
          "reason": "warm"})",
       1, "      b         Warning  warm\n"},
      {R"({"class": "temperature", "name": "a", "condition": "critical", "reason": "hot"})", 2, "Error  hot"},
      {"", 3, "System status: NoStatus"},
      {R"({"class": "temperature", "name": "a", "answers": [{"to": "state", "data": "warm"}]})", 3,
       "NoStatus"},
  };
  for (const auto& row : rows) {
    EmhostProcess emhost(Arguments(row.objects, {"--once"}));
    EXPECT_EQ(emhost.ExitCode(), row.code) << emhost.Written();
    EXPECT_NE(emhost.Written().find(row.line), std::string::npos) << emhost.Written();
  }
}

TEST_F(EmhostTest, OnceAsJson) {
  EmhostProcess emhost(
      Arguments(R"({"class": "temperature", "name": "Inlet", "value": 23})", {"--once", "--json"}));
  EXPECT_EQ(emhost.ExitCode(), 0);
  const auto json = nlohmann::json::parse(emhost.Written());
  EXPECT_EQ(json["Tree"]["Children"][0]["Children"][0]["Children"][0]["Object"]["Value"], 23.0);
}

TEST_F(EmhostTest, RunShowsEventsAndStopsOnASignal) {
  const std::string story = R"({"class": "temperature", "name": "CPU", "story": [{"at": 1},
    {"at": 2, "condition": "critical", "reason": "95 degrees"}]})";
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    EmhostProcess emhost(Arguments(story, {}, R"("rescanSeconds": 0.05, )"));
    ASSERT_TRUE(emhost.WaitFor("Sensors, CPU: Fine -> Error  (95 degrees)\n")) << emhost.Written();
    EXPECT_TRUE(emhost.WaitFor("System: Fine -> Error\n")) << emhost.Written();
    EXPECT_TRUE(emhost.WaitFor("Error LED: Fine -> Error\n")) << emhost.Written();
    emhost.Signal(signal);
    EXPECT_EQ(emhost.ExitCode(), 0) << emhost.Written();
  }
}

TEST_F(EmhostTest, StopsAtOnceWhileAnAnswerIsAwaited) {
  EmhostProcess emhost(Arguments(R"({"class": "temperature", "name": "a", "story": [{"at": 1},
    {"at": 2, "answers": [{"delaySeconds": 600}]}]})",
                                 {}, R"("rescanSeconds": 0.05, )"));
  ASSERT_TRUE(emhost.WaitFor("Error LED:")) << emhost.Written();
  const auto begin = std::chrono::steady_clock::now();
  emhost.Signal(SIGTERM);
  EXPECT_EQ(emhost.ExitCode(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4)) << "the time-out is 5 seconds";
}

TEST_F(EmhostTest, NothingIsLostInSilence) {
  std::string options;
  for (const std::string& argument : Arguments(R"({"class": "temperature", "name": "a", "value": 1})", {})) {
    options += argument == "run" ? "" : " '" + argument + "'";
  }
  const std::string emhost = "cd '" + folder_.Path().string() + "' && { ";
  const struct {
    std::string command;
    int code;
    const char* message;
  } rows[] = {
      {" run --once" + options + " > /dev/full", 3, "standard output cannot be written"},
      {" run --once" + options + " >&-", 3, "standard output cannot be written"},
      {" --version > /dev/full", 3, "standard output cannot be written"},
      // What is shown must not land in the file that is opened next.
      {" record a.gz --scans 1" + options + " >&- || true; } && { gzip -t a.gz", 0, ""},
  };
  for (const auto& row : rows) {
    const std::string file = folder_.File("output");
    const std::string command = emhost + "'" EMHOST_PROGRAM "'" + row.command + "; } 2> '" + file + "' 1>&2";
    const int status = std::system(("( " + command + " )").c_str());
    std::ifstream stream(file);
    const std::string written{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    EXPECT_EQ(WEXITSTATUS(status), row.code) << row.command << written;
    EXPECT_NE(written.find(row.message), std::string::npos) << row.command << written;
  }
}

TEST_F(EmhostTest, SaysWhatIsWrong) {
  const std::string scenario = "scenario:" + folder_.Write("bad.json", "{}");
  const std::string etc = folder_.File("etc");
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } rows[] = {
      {{"run", "--once", "--module", "/no/such.so", "--config", etc, "--provider", "linux"},
       "the module /no/such.so cannot be loaded"},
      {{"run", "--once", "--module", "/bin/true", "--config", etc}, "/bin/true"},
      {{"run", "--once", "--module", FAKE_MODULE, "--config", "/no/such"},
       "there is no EM_STATUS.ini in /no/such"},
      {{"run", "--once", "--module", FAKE_MODULE, "--config", etc, "--provider", scenario},
       "bad.json: /: expected a member \"format\""},
      {{"run", "--root", etc}, "expected a folder with the folder sys or proc in it"},
      {{"run", "--root", "/", "--unit", "x"}, "--root"},
      {{"run", "--once", "--module", FAKE_MODULE, "--config", etc, "--provider", "scenario:/"},
       "/: cannot be read: Is a directory"},
      {{"run", "--once", "--module", FAKE_MODULE, "--config", etc, "--provider", "scenario:/dev/zero"},
       "this is no scenario"},
      {{"run", "--provider", "windows"}, "expected linux or scenario:FILE"},
      {{"walk"}, "there is no command \"walk\". emhost --help lists them all."},
      {{"chekc-config"}, "Did you mean check-config?"},
  };
  for (const auto& row : rows) {
    EmhostProcess emhost(row.arguments);
    EXPECT_EQ(emhost.ExitCode(), 3) << emhost.Written();
    EXPECT_NE(emhost.Written().find(row.message), std::string::npos) << emhost.Written();
  }
}

}  // namespace
}  // namespace emstatus::test
