#include "host/commands/Program.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace emstatus::host {
namespace {

using Names = std::set<std::string>;

/// The commands, each with its long options.
std::map<std::string, Names> RealCommands() {
  const Program program;
  std::map<std::string, Names> commands;
  for (const CLI::App* command : program.CommandLine().get_subcommands({})) {
    for (const CLI::Option* option : command->get_options()) {
      for (const std::string& name : option->get_lnames()) {
        commands[command->get_name()].insert("--" + name);
      }
    }
  }
  return commands;
}

/// What bash offers behind the words.
Names Completed(const std::string& words, int position) {
  const std::string script = "source '" EM_SOURCE_DIR "/etc/bash-completion/emhost'; COMP_WORDS=(" + words +
                             "); COMP_CWORD=" + std::to_string(position) +
                             R"(; _emhost; printf '%s\n' "${COMPREPLY[@]}")";
  FILE* output = popen(("exec bash -c \"$(cat <<'END'\n" + script + "\nEND\n)\"").c_str(), "re");
  std::string text;
  std::array<char, 4096> bytes{};
  for (std::size_t count = 0; (count = fread(bytes.data(), 1, bytes.size(), output)) > 0;) {
    text.append(bytes.data(), count);
  }
  EXPECT_EQ(pclose(output), 0) << script;
  std::istringstream lines(text);
  return {std::istream_iterator<std::string>(lines), {}};
}

TEST(BashCompletion, OffersTheProgramsCommandsAndOptions) {
  Names names{"--help", "--version"};
  for (const auto& [name, options] : RealCommands()) {
    names.insert(name);
    EXPECT_EQ(Completed("emhost " + name + " --", 2), options) << name;
  }
  EXPECT_EQ(Completed("emhost ''", 1), names);
}

TEST(BashCompletion, OffersValues) {
  const struct {
    const char* words;
    int position;
    const char* offered;
  } rows[] = {
      {"emhost tre", 1, "tree"},
      {"emhost run --provider l", 3, "linux"},
      {"emhost run --provider scenario : /usr/incl", 5, "/usr/include"},
      {"emhost run --state /usr/incl", 3, "/usr/include"},
      {"emhost run --link l", 3, "lo"},
      {"emhost check-config /usr/incl", 2, "/usr/include"},
      {"emhost events --last ''", 3, ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Completed(row.words, row.position), *row.offered == '\0' ? Names{} : Names{row.offered})
        << row.words;
  }
}

/// The manual's sections by their headings, with the options that the tables in them list.
struct Manual {
  std::map<std::string, Names> options;
  std::map<std::string, std::string> texts;
  Names commands;

  Manual() {
    std::ifstream file(EM_SOURCE_DIR "/docs/emhost.1.md");
    const std::regex option(R"(\*\*(--[a-z-]+)\*\*)");
    std::string section;
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with("## ") || line.starts_with("### ")) {
        section = line.substr(line.find(' ') + 1);
        if (line.starts_with("### ")) {
          commands.insert(section);
        }
      }
      texts[section] += line + "\n";
      if (line.starts_with("| **-")) {
        const std::string cell = line.substr(0, line.find('|', 1));
        for (std::sregex_iterator match(cell.begin(), cell.end(), option), end; match != end; ++match) {
          options[section].insert((*match)[1]);
        }
      }
    }
  }
};

TEST(ManualPage, HasEveryCommandAndOptionAndNoOther) {
  Manual manual;
  Names commands;
  for (const auto& [name, real] : RealCommands()) {
    commands.insert(name);
    Names told = manual.options[name];
    told.insert({"--help", "--version"});
    for (const char* group : {"Scan options", "Asking options"}) {
      std::string link = std::string("(#") + group + ")";
      std::ranges::transform(link, link.begin(),
                             [](char one) { return one == ' ' ? '-' : char(std::tolower(one)); });
      if (manual.texts[name].find(link) != std::string::npos) {
        told.insert(manual.options[group].begin(), manual.options[group].end());
      }
    }
    EXPECT_EQ(told, real) << name;
    EXPECT_NE(manual.texts["Exit status"].find("**" + name), std::string::npos) << name;
  }
  EXPECT_EQ(manual.commands, commands);
}

TEST(ProgramHelp, EveryCommandHasExamplesThatNameIt) {
  const Program program;
  for (const CLI::App* command : program.CommandLine().get_subcommands({})) {
    const std::string help = command->help();
    const std::size_t examples = help.find("Examples:");
    ASSERT_NE(examples, std::string::npos) << command->get_name();
    EXPECT_NE(help.find("emhost " + command->get_name(), examples), std::string::npos) << command->get_name();
  }
}

}  // namespace
}  // namespace emstatus::host
