#include <gtest/gtest.h>

#include <sstream>

#include "host/configcheck/Checks.h"
#include "host/configcheck/ProblemText.h"

namespace emstatus::host {
namespace {

const std::string kGood = ReadFileText(EM_SOURCE_DIR "/tests/data/configurations/good.ini");

/// Without the file's name.
std::string Told(const std::vector<Problem>& problems) {
  std::string lines;
  for (const Problem& problem : problems) lines += TextOf(problem, "").substr(1) + "\n";
  return lines;
}

std::string ToldOf(const std::string& text) {
  const IniFile ini(text);
  return Told(CheckConfiguration(ini, ReadConfiguration(ini), "EM_STATUS.ini"));
}

std::string WithLine(std::size_t line, const std::string& text) {
  std::size_t begin = 0;
  for (std::size_t number = 1; number < line; ++number) begin = kGood.find('\n', begin) + 1;
  std::string changed = kGood;
  return changed.replace(begin, kGood.find('\n', begin) - begin, text);
}

TEST(ConfigurationCheck, TellsWhatIsWrong) {
  EXPECT_EQ(ToldOf(kGood), "");
  std::istringstream cases(ReadFileText(EM_SOURCE_DIR "/tests/data/configurations/problems.txt"));
  std::string line;
  while (std::getline(cases, line) && !line.starts_with("--- ")) {
  }
  int count = 0;
  for (; line.starts_with("--- "); ++count) {
    const std::string head = line.substr(4);
    std::string text;
    while (std::getline(cases, line) && line != "===") text += line + "\n";
    std::string expected;
    while (std::getline(cases, line) && !line.starts_with("--- "))
      expected += line.empty() ? "" : line + "\n";
    SCOPED_TRACE(head + ": " + text);
    if (head == "simulation") {
      EXPECT_EQ(Told(CheckSimulation(text, ReadConfiguration(IniFile(kGood)), kGood, "simulation")),
                expected);
    } else {
      text.pop_back();
      EXPECT_EQ(ToldOf(WithLine(std::stoul(head), text)), expected);
    }
  }
  EXPECT_GT(count, 120);
}

TEST(ConfigurationCheck, TellsWhatTextCannotShow) {
  // Behind the zero byte is the only "]" of the header.
  EXPECT_NE(ToldOf(kGood + std::string("\n[\0]", 4)).find("does not end in"), std::string::npos);
  std::string keys = "[EnvironmentVariables]\n";
  for (int i = 0; i < 7000; ++i) keys += "VARIABLE" + std::to_string(100 + i) + "=1\n";
  std::string manyComponents = kGood;
  std::string manySubsystems = "Subsystems=Cooling";
  for (std::size_t i = 0; i < 170; ++i) {
    manySubsystems += " S" + std::to_string(i);
    manyComponents += "[Subsystem.S" + std::to_string(i) + "]\nDisplayName=More\nComponents=";
    for (std::size_t k = 0; k < 100; ++k) manyComponents += "c" + std::to_string(i * 100 + k) + " ";
    manyComponents += "\n";
  }
  manyComponents.replace(manyComponents.find("Subsystems=Cooling"), 18, manySubsystems);
  std::string neverAsked = WithLine(8, "AdvancedPollingCycles=0");
  neverAsked.replace(neverAsked.find("Mandatory"), 9, "Inactive");
  const struct {
    std::string text;
    const char* expected;
  } rows[] = {
      {WithLine(24, "DisplayName=" + std::string(1100, 'x')),
       "24: warning: the line has 1113 characters: what stands behind each 1023rd is taken for a line of its "
       "own; make it shorter; parts of a request can go into a variable\n"},
      {WithLine(24, std::string("DisplayName=Fans\0of the server", 30)),
       "24: warning: the line holds a zero byte, and what stands behind it is not read; save the file as "
       "plain text (UTF-8)\n"},
      {WithLine(15, keys),
       "15: error: [EnvironmentVariables]: the names of its keys take 90104 bytes together, more than 64509: "
       "none of its free keys is read; give it fewer or shorter keys\n"},
      {neverAsked,
       "26: error: Category in [Component.Fans]: with AdvancedPollingCycles=0, a component that begins inactive "
       "is never asked; write Optional, or give AdvancedPollingCycles at least 2\n"},
      {manyComponents,
       "19: error: Subsystems in [System]: more than 16384 components are listed; those behind them are left "
       "out; list fewer\n"},
      {WithLine(24, "DisplayName=Fans\x1b[31m;of"),
       "24: warning: DisplayName in [Component.Fans]: a semicolon cuts the value; \";of\" is taken for a comment; "
       "no value can hold a semicolon; put a blank before a comment\n"},
  };
  for (const auto& row : rows) {
    const std::string told = ToldOf(row.text);
    EXPECT_NE(told.find(row.expected), std::string::npos) << row.expected << "\n" << told.substr(0, 2000);
  }
  EXPECT_EQ(ToldOf(WithLine(22, "Components=\x1b[2J\xff")).find('\x1b'), std::string::npos);
}

TEST(ConfigurationCheck, FindsNothingInWhatIsShipped) {
  const std::string text = ReadFileText(EM_SOURCE_DIR "/etc/EM_STATUS.ini");
  EXPECT_EQ(ToldOf(text), "");
  const std::string simulation = ReadFileText(EM_SOURCE_DIR "/etc/EM_STATUS_simu.ini.example");
  EXPECT_EQ(
      Told(CheckSimulation(simulation, ReadConfiguration(IniFile(text)), text, "")),
      "16: warning: Active in [Config]: statuses are being forced, and nothing ends that by itself; take "
      "the file away, or say emhost simulate --clear\n");
}

TEST(ConfigurationCheck, JsonHasTheSame) {
  const std::string text = WithLine(13, "Warnung=2");
  const IniFile ini(text);
  const auto problems = CheckConfiguration(ini, ReadConfiguration(ini), "EM_STATUS.ini");
  const auto json = ProblemsJson(problems);
  ASSERT_EQ(json.size(), problems.size());
  EXPECT_EQ(json.at(1).at("Line"), 32);
  EXPECT_EQ(json.at(1).at("Section"), "Component.Fans");
  EXPECT_EQ(json.at(1).at("Key"), "Status.Other");
  EXPECT_EQ(json.at(1).at("Severity"), "error");
  EXPECT_EQ(json.at(1).at("Advice"), "did you mean Warnung?");
  EXPECT_EQ(Summary(problems), "1 error, 1 warning");
  EXPECT_EQ(Summary({}), "no problems");
}

}  // namespace
}  // namespace emstatus::host
