#include <gtest/gtest.h>

#include "host/configuration/Configuration.h"

namespace emstatus::host {
namespace {

TEST(IniFile, KnowsWhereEverythingStands) {
  const std::string longLine = "Long=" + std::string(IniFile::kLongestLine - 5, 'x') + "Tail=fallen off\n";
  const IniFile ini(
      "Before=any header\n[A] behind\nKey = one ; said\nKey=two\nno entry\n;Not=read\n[B;]\nX=1;2\n" +
      longLine + "[A]\nKey=three\n");
  const IniEntry* key = ini.Find("A", "Key");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->value, "one");
  EXPECT_EQ(key->line, 3U);
  EXPECT_EQ(key->comment, "; said");
  EXPECT_FALSE(key->isCutWithin);
  EXPECT_EQ(ini.Keys("A"), (std::vector<std::string>{"Key", "Key"}));
  EXPECT_EQ(ini.Value("A", "Not"), std::nullopt);

  ASSERT_EQ(ini.Sections().size(), 4U);
  EXPECT_EQ(ini.Sections()[0].entries.at(0).key, "Before");
  EXPECT_EQ(ini.Sections()[1].strays.at(0).line, 5U);
  EXPECT_EQ(ini.Sections()[2].name, "") << "a semicolon cuts headers, too";
  EXPECT_EQ(ini.Sections()[2].header, "[B;]");
  EXPECT_TRUE(ini.Sections()[2].entries.at(0).isCutWithin);
  EXPECT_EQ(ini.Sections()[2].entries.at(2).key, "Tail");
  EXPECT_EQ(ini.Sections()[2].entries.at(2).line, 9U);
  EXPECT_EQ(ini.Sections()[3].entries.at(0).line, 11U);
  ASSERT_EQ(ini.LongLines().size(), 1U);
  EXPECT_EQ(ini.LongLines()[0].line, 9U);
  EXPECT_EQ(ini.LongLines()[0].length, longLine.size());
}

TEST(IniFile, TellsWhatCannotBeRead) {
  for (const char* path : {"/", "/nowhere/EM_STATUS.ini"}) {
    try {
      ReadFileText(path);
      FAIL() << path;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
    }
  }
}

constexpr const char* kRules = R"([Info]
Filename=EM_STATUS.ini
LayoutVersion=4
[Configuration]
StatusValueQueryFail=2
[StatusMapping]
OK=1
Warning=2
Error=3
[System]
Subsystems=S
[Subsystem.S]
DisplayName=S
Components=A B
[Component.A]
DisplayName=A
Category=Mandatory
Status.Good=OK 0
Status.Again=Error 0
Status.Bad=Error 2
Status.Other=Warning *
Redundancy.Enough=1 2
[Component.B]
DisplayName=B
Status.Good=OK 0
[Component.B.alt]
DisplayName=B
Status.Good=OK 7
)";

TEST(Configuration, KnowsTheRuleOfAStatus) {
  const Configuration configuration = ReadConfiguration(IniFile(kRules));
  const struct {
    const char* section;
    std::int32_t rawState;
    std::uint32_t status;
    std::size_t line;
    const char* key;
  } rows[] = {
      {"Component.A", 0, 1, 18, "Status.Good"},
      {"Component.A", 0, 3, 0, "the second entry of a raw state does nothing"},
      {"Component.A", 2, 3, 20, "Status.Bad"},
      {"Component.A", 77, 2, 21, "Status.Other"},
      {"Component.A", 0, 2, 5, "StatusValueQueryFail"},
      {"Component.A", -1, 0, 15, ""},
      {"Component.B", 9, 0, 23, ""},
      {"Component.B", 0, 2, 0, "not mandatory"},
      {"Component.B.alt", 7, 1, 28, "Status.Good"},
      {"Component.C", 0, 1, 0, "no such section"},
      {"A", 0, 1, 0, "no section of a component"},
  };
  for (const auto& row : rows) {
    const auto rule = configuration.RuleOf(row.section, row.rawState, row.status);
    ASSERT_EQ(rule.has_value(), row.line != 0) << row.section << ' ' << row.rawState << ' ' << row.key;
    if (rule) {
      const std::string section = row.line == 5 ? "Configuration" : row.section;
      EXPECT_EQ(*rule, (Rule{"EM_STATUS.ini", row.line, section, row.key}));
    }
  }
  EXPECT_EQ(configuration.RedundancyRuleOf("Component.A", 2),
            (Rule{"EM_STATUS.ini", 22, "Component.A", "Redundancy.Enough"}));
  EXPECT_EQ(configuration.RedundancyRuleOf("Component.A", 3), std::nullopt);
}

}  // namespace
}  // namespace emstatus::host
